#include "reference_suite/core/one_line.h"

namespace reference_core {

std::string OneLine(const std::string& text) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string line;
  line.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\t') {
      line += "\\t";
    } else if (byte < 0x20 || byte == 0x7f) {
      line += "\\x";
      line += kHex[byte >> 4];
      line += kHex[byte & 15];
    } else {
      line += c;
    }
  }
  return line;
}

}  // namespace reference_core
