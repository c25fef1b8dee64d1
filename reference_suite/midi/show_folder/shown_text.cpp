#include "reference_suite/midi/show_folder/shown_text.h"

#include <cstddef>
#include <cstdint>

namespace tesk_midi {

namespace {

// The shapes of UTF-8: how many bytes follow a lead byte, and the least code point that needs as many.
struct Shape {
  unsigned mask;
  unsigned lead;
  std::size_t size;
  std::uint32_t least;
};
constexpr Shape kShapes[] = {
    {0x80, 0x00, 1, 0x00}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

struct Character {
  std::size_t size = 0;  // 0: no character begins here
  std::uint32_t codePoint = 0;
};

unsigned ByteAt(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text[index]);
}

Character Decode(std::string_view text, const Shape& shape) {
  Character character{shape.size, ByteAt(text, 0) & ~shape.mask};
  if (text.size() < shape.size) return {};
  for (std::size_t i = 1; i < shape.size; ++i) {
    if ((ByteAt(text, i) & 0xC0) != 0x80) return {};
    character.codePoint = character.codePoint << 6 | (ByteAt(text, i) & 0x3F);
  }
  const bool surrogate = character.codePoint >= 0xD800 && character.codePoint < 0xE000;
  if (character.codePoint < shape.least || character.codePoint > 0x10FFFF || surrogate) return {};
  return character;
}

// The character at the front of `text`, which is not empty.
Character FirstCharacter(std::string_view text) {
  for (const Shape& shape : kShapes) {
    if ((ByteAt(text, 0) & shape.mask) == shape.lead) return Decode(text, shape);
  }
  return {};
}

// Those of ASCII and the 32 above it, which terminals obey as well.
bool IsControl(std::uint32_t codePoint) {
  return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
}

void AppendEscaped(std::string_view bytes, std::string* shown) {
  static constexpr char kDigits[] = "0123456789abcdef";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    *shown += "\\x";
    *shown += kDigits[ByteAt(bytes, i) >> 4];
    *shown += kDigits[ByteAt(bytes, i) & 15];
  }
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = FirstCharacter(text).size;
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

}  // namespace

std::string ShownText(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const Character character = FirstCharacter(text);
    const std::size_t size = character.size == 0 ? 1 : character.size;
    if (character.size == 0 || IsControl(character.codePoint)) {
      AppendEscaped(text.substr(0, size), &shown);
    } else {
      shown += text.substr(0, size);
    }
    text.remove_prefix(size);
  }
  return shown;
}

std::string Quoted(std::string_view text) {
  return '"' + ShownText(text) + '"';
}

std::string TextFromMidi(std::string_view bytes) {
  if (IsUtf8(bytes)) return ShownText(bytes);
  std::string utf8;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const unsigned byte = ByteAt(bytes, i);
    if (byte >= 0x80) utf8 += static_cast<char>(0xC0 | byte >> 6);
    utf8 += static_cast<char>(byte >= 0x80 ? 0x80 | (byte & 0x3F) : byte);
  }
  return ShownText(utf8);
}

}  // namespace tesk_midi
