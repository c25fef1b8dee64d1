#pragma once

#include <concepts>
#include <ios>
#include <locale>
#include <sstream>
#include <string>
#include <type_traits>

namespace exc {

template <typename T>
concept Number = std::is_arithmetic_v<T>;

// Gathers text privately and hands it to `Target` in one piece: at the latest when it is destroyed.
//
// Threads    belongs to one thread; several buffers may share a target.
// Twice      commit() leaves the text in the buffer. A buffer that is flushed by hand and then destroyed has
//            its text written twice, so flush() is for buffers that are not used again, and seldom needed.
template <typename Target>
class OutBuffer : public std::ostringstream {
 public:
  // The target outlives the buffer. Numbers are written alike whatever locale the process has.
  explicit OutBuffer(Target& target) : target_(target) { imbue(std::locale::classic()); }
  // Ends the program when the target throws.
  ~OutBuffer() override { flush(); }
  OutBuffer(const OutBuffer&) = delete;
  OutBuffer& operator=(const OutBuffer&) = delete;

  OutBuffer& operator<<(const char* text) { return Append_(text); }
  OutBuffer& operator<<(const std::string& text) { return Append_(text); }
  OutBuffer& operator<<(long long number) { return Append_(number); }
  OutBuffer& operator<<(unsigned int number) { return Append_(number); }
  OutBuffer& operator<<(unsigned short number) { return Append_(number); }
  OutBuffer& operator<<(unsigned long number) { return Append_(number); }
  OutBuffer& operator<<(std::ios_base& (*manipulator)(std::ios_base&)) { return Append_(manipulator); }
  // The other numbers, and characters, as a standard stream writes them.
  template <Number T>
  OutBuffer& operator<<(T number) {
    return Append_(number);
  }

  // Writes the whole text to the target and forgets formatting errors. The text stays.
  void commit() {
    target_ << str();
    clear();
  }
  // The same, and flushes the target.
  void flush() {
    commit();
    target_.flush();
  }

 private:
  template <typename T>
  OutBuffer& Append_(const T& value) {
    static_cast<std::ostream&>(*this) << value;
    return *this;
  }

  Target& target_;
};

}  // namespace exc
