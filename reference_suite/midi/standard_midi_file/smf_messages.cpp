#include "reference_suite/midi/standard_midi_file/smf_messages.h"

#include <utility>

#include "reference_suite/midi/standard_midi_file/smf_error.h"
#include "reference_suite/midi/standard_midi_file/smf_limits.h"

namespace tesk_midi {

std::string SmfMessageAt(const std::string& name, std::size_t offset, const std::string& found,
                         const std::string& cure) {
  return name + ": byte " + std::to_string(offset) + ": " + found + "; " + cure + ".";
}

void RefuseSmf(const std::string& name, std::size_t offset, const std::string& found,
               const std::string& cure) {
  throw SmfError(SmfMessageAt(name, offset, found, cure));
}

std::string HexText(unsigned long value, int digits) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) text += kDigits[(value >> shift) & 0xF];
  return text;
}

void SmfWarnings::Add(std::size_t offset, const std::string& found, const std::string& consequence) {
  if (lines_.size() == kMaxSmfWarnings) {
    ++leftOut_;
    return;
  }
  lines_.push_back(SmfMessageAt(name_, offset, found, consequence));
}

std::vector<std::string> SmfWarnings::Take() {
  if (leftOut_ != 0) lines_.push_back(name_ + ": " + std::to_string(leftOut_) + " more warnings left out.");
  return std::move(lines_);
}

}  // namespace tesk_midi
