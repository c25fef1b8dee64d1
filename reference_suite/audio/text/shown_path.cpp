#include "reference_suite/audio/text/shown_path.h"

#include <cstddef>

namespace tesk_audio {

namespace {

unsigned ByteAt(const std::string& text, std::size_t index) {
  return static_cast<unsigned char>(text[index]);
}

// Bytes of the well-formed UTF-8 character that begins at `start`; 0 when none does.
std::size_t CharacterLength(const std::string& text, std::size_t start) {
  const unsigned first = ByteAt(text, start);
  if (first < 0x80) return 1;
  std::size_t length = 0;
  if (first >= 0xC2 && first <= 0xDF) length = 2;
  if (first >= 0xE0 && first <= 0xEF) length = 3;
  if (first >= 0xF0 && first <= 0xF4) length = 4;
  if (length == 0 || start + length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(text, start + i) & 0xC0U) != 0x80U) return 0;
  }
  const unsigned second = ByteAt(text, start + 1);
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool surrogate = first == 0xED && second >= 0xA0;
  const bool beyond = first == 0xF4 && second >= 0x90;
  return overlong || surrogate || beyond ? 0 : length;
}

// C0, DEL, and C1 (two bytes in UTF-8), which terminals obey as well.
bool IsControl(const std::string& text, std::size_t start, std::size_t length) {
  const unsigned first = ByteAt(text, start);
  if (length == 1) return first < 0x20 || first == 0x7F;
  return length == 2 && first == 0xC2 && ByteAt(text, start + 1) < 0xA0;
}

}  // namespace

std::string ShownPath(const std::string& path) {
  static const char* const digits = "0123456789abcdef";
  std::string shown;
  for (std::size_t i = 0; i < path.size();) {
    const std::size_t length = CharacterLength(path, i);
    if (length != 0 && !IsControl(path, i, length)) {
      shown.append(path, i, length);
      i += length;
      continue;
    }
    const std::size_t end = i + (length == 0 ? 1 : length);
    for (; i < end; ++i) {
      shown += "\\x";
      shown += digits[ByteAt(path, i) >> 4U];
      shown += digits[ByteAt(path, i) & 15U];
    }
  }
  return shown;
}

}  // namespace tesk_audio
