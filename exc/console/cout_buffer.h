#pragma once

#include <ios>
#include <string>

#include "exc/console/out_buffer.h"
#include "exc/console/thread_safe_ostream.h"

namespace exc {

// Streamed into a CoutBuffer it ends the line. It does not flush.
struct EndlT {};

// One line for the console. A temporary per line, which writes it when the statement ends:
//
//   exc::CoutBuffer() << "WARNING: song " << number << " has no audio." << exc::EndlT();
//
// Lines of different threads never interleave.
class CoutBuffer : public OutBuffer<ThreadSafeOStream> {
 public:
  CoutBuffer();
  ~CoutBuffer() override;

  CoutBuffer& operator<<(const char* text) { return Append_(text); }
  CoutBuffer& operator<<(const std::string& text) { return Append_(text); }
  CoutBuffer& operator<<(long long number) { return Append_(number); }
  CoutBuffer& operator<<(unsigned int number) { return Append_(number); }
  CoutBuffer& operator<<(unsigned short number) { return Append_(number); }
  CoutBuffer& operator<<(unsigned long number) { return Append_(number); }
  CoutBuffer& operator<<(std::ios_base& (*manipulator)(std::ios_base&)) { return Append_(manipulator); }
  template <Number T>
  CoutBuffer& operator<<(T number) {
    return Append_(number);
  }
  CoutBuffer& operator<<(EndlT) { return Append_("\n"); }

 private:
  template <typename T>
  CoutBuffer& Append_(const T& value) {
    OutBuffer::operator<<(value);
    return *this;
  }
};

}  // namespace exc
