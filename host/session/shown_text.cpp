#include "host/session/shown_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace orbel::host {
namespace {

void AppendEscaped(std::string* out, unsigned char byte) {
  static constexpr char kDigits[] = "0123456789abcdef";
  *out += "\\x";
  *out += kDigits[byte >> 4];
  *out += kDigits[byte & 15];
}

// Length of the well-formed UTF-8 sequence at the start of `text`, and its code point; 0 when there is none.
std::size_t Decode(std::string_view text, std::uint32_t* codePoint) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  std::size_t length = 0;
  std::uint32_t least = 0;
  if (byte(0) < 0x80) {
    *codePoint = byte(0);
    return 1;
  }
  if ((byte(0) & 0xe0) == 0xc0) length = 2, least = 0x80, *codePoint = byte(0) & 0x1fU;
  if ((byte(0) & 0xf0) == 0xe0) length = 3, least = 0x800, *codePoint = byte(0) & 0x0fU;
  if ((byte(0) & 0xf8) == 0xf0) length = 4, least = 0x10000, *codePoint = byte(0) & 0x07U;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t index = 1; index < length; ++index) {
    if ((byte(index) & 0xc0) != 0x80) return 0;
    *codePoint = (*codePoint << 6) | (byte(index) & 0x3fU);
  }
  const bool surrogate = *codePoint >= 0xd800 && *codePoint <= 0xdfff;
  return *codePoint < least || *codePoint > 0x10ffff || surrogate ? 0 : length;
}

// Characters that move, hide or turn around what stands beside them.
bool IsControl(std::uint32_t codePoint) {
  return codePoint < 0x20 || (codePoint >= 0x7f && codePoint < 0xa0) ||
         (codePoint >= 0x200b && codePoint <= 0x200f) || (codePoint >= 0x2028 && codePoint <= 0x202e) ||
         (codePoint >= 0x2066 && codePoint <= 0x2069) || codePoint == 0xfeff;
}

}  // namespace

std::string Shown(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    std::uint32_t codePoint = 0;
    std::size_t length = Decode(text, &codePoint);
    const bool plain = length > 0 && !IsControl(codePoint);
    if (length == 0) length = 1;
    for (std::size_t index = 0; index < length; ++index) {
      if (plain) {
        out += text[index];
      } else {
        AppendEscaped(&out, static_cast<unsigned char>(text[index]));
      }
    }
    text.remove_prefix(length);
  }
  return out;
}

std::string ShownInShort(std::string_view text) {
  constexpr int kMostCharacters = 60;
  std::size_t end = 0;
  for (int count = 0; count < kMostCharacters && end < text.size(); ++count) {
    std::uint32_t codePoint = 0;
    end += std::max<std::size_t>(1, Decode(text.substr(end), &codePoint));
  }
  return Shown(text.substr(0, end)) + (end < text.size() ? "..." : "");
}

std::string WithoutPath(const std::string& text, const std::string& file) {
  const std::string name = Shown(file) + ": ";
  const std::size_t at = text.find(name);
  return at == std::string::npos ? text : text.substr(at + name.size());
}

std::string WithoutFullStop(std::string text) {
  if (text.ends_with('.')) text.pop_back();
  return text;
}

std::string Channels(unsigned count) {
  return std::to_string(count) + (count == 1 ? " channel" : " channels");
}

std::string MinutesAndSeconds(double seconds) {
  const long long milliseconds = std::llround(seconds * 1000.0);
  const auto padded = [](long long value, std::size_t width) {
    std::string digits = std::to_string(value);
    return std::string(digits.size() < width ? width - digits.size() : 0, '0') + digits;
  };
  return std::to_string(milliseconds / 60000) + ":" + padded(milliseconds / 1000 % 60, 2) + "." +
         padded(milliseconds % 1000, 3);
}

std::string ShortNumber(double value) {
  char digits[400];  // the largest double has 309 digits
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed).ptr;
  return std::string(digits, end);
}

}  // namespace orbel::host
