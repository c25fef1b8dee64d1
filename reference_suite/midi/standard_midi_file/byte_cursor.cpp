#include "reference_suite/midi/standard_midi_file/byte_cursor.h"

#include <utility>

#include "reference_suite/midi/standard_midi_file/smf_messages.h"

namespace tesk_midi {

namespace {

const char kDamaged[] = "the file is damaged or cut off, export it again";

}  // namespace

ByteCursor::ByteCursor(std::span<const std::uint8_t> bytes, const std::string& name, std::string place)
    : bytes_(bytes), name_(name), place_(std::move(place)) {}

std::uint8_t ByteCursor::U8(const char* what) {
  Need_(1, Offset(), what);
  return bytes_[position_++];
}

std::uint16_t ByteCursor::U16(const char* what) {
  Need_(2, Offset(), what);
  const unsigned high = bytes_[position_];
  const unsigned low = bytes_[position_ + 1];
  position_ += 2;
  return static_cast<std::uint16_t>(high << 8 | low);
}

std::uint32_t ByteCursor::U32(const char* what) {
  Need_(4, Offset(), what);
  const std::uint32_t high = U16(what);
  return high << 16 | U16(what);
}

std::uint32_t ByteCursor::Quantity(const char* what) {
  const std::size_t start = Offset();
  std::uint32_t value = 0;
  for (int count = 0; count < 4; ++count) {
    Need_(1, start, what);
    const std::uint8_t byte = bytes_[position_++];
    value = value << 7 | (byte & 0x7Fu);
    if ((byte & 0x80u) == 0) return value;
  }
  RefuseSmf(name_, start, std::string(what) + " of more than four bytes", kDamaged);
}

std::span<const std::uint8_t> ByteCursor::Take(std::size_t count, const char* what) {
  Need_(count, Offset(), what);
  const auto taken = bytes_.subspan(position_, count);
  position_ += count;
  return taken;
}

ByteCursor ByteCursor::Split(std::size_t count, std::string place) {
  ByteCursor part(bytes_.subspan(position_, count), name_, std::move(place));
  part.base_ = Offset();
  position_ += count;
  return part;
}

void ByteCursor::Need_(std::size_t count, std::size_t start, const char* what) const {
  if (count <= Remaining()) return;
  RefuseSmf(name_, start,
            std::string(what) + " is cut off (bytes needed: " + std::to_string(count) + ", left in " +
                place_ + ": " + std::to_string(Remaining()) + ")",
            kDamaged);
}

}  // namespace tesk_midi
