#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tesk_midi {

// "NAME: byte OFFSET: FOUND; CURE."
std::string SmfMessageAt(const std::string& name, std::size_t offset, const std::string& found,
                         const std::string& cure);

// Throws SmfError with that text.
[[noreturn]] void RefuseSmf(const std::string& name, std::size_t offset, const std::string& found,
                            const std::string& cure);

// "4D546864" for the four bytes of a chunk's type, "E728" for two: bytes of a file never reach a terminal
// raw.
std::string HexText(unsigned long value, int digits);

// Collects the warnings of one file; what exceeds kMaxSmfWarnings is counted, not kept.
class SmfWarnings {
 public:
  explicit SmfWarnings(const std::string& name) : name_(name) {}

  void Add(std::size_t offset, const std::string& found, const std::string& consequence);

  // The lines kept, with a last one about those left out if there are any.
  std::vector<std::string> Take();

 private:
  const std::string& name_;
  std::vector<std::string> lines_;
  std::size_t leftOut_ = 0;
};

}  // namespace tesk_midi
