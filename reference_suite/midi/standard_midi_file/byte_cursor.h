#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tesk_midi {

// Reads big-endian numbers out of one stretch of a file and never past its end.
//
// Units      offsets are bytes from the start of the file, also inside a chunk.
// Errors     every read that does not fit throws SmfError with the offset at which the value begins.
// Threads    plain value; refers to the bytes and to the name, which must outlive it.
class ByteCursor {
 public:
  // Over the whole file. `place` is what messages call the stretch: "the file", "track 3".
  ByteCursor(std::span<const std::uint8_t> bytes, const std::string& name, std::string place);

  std::size_t Offset() const { return base_ + position_; }
  std::size_t Remaining() const { return bytes_.size() - position_; }
  bool AtEnd() const { return Remaining() == 0; }
  const std::string& Name() const { return name_; }
  const std::string& Place() const { return place_; }

  // `what` says in a message what is cut off: "a delta time".
  std::uint8_t U8(const char* what);
  std::uint16_t U16(const char* what);
  std::uint32_t U32(const char* what);
  std::uint32_t Quantity(const char* what);  // variable-length, at most four bytes
  std::span<const std::uint8_t> Take(std::size_t count, const char* what);

  // The next byte, which must exist.
  std::uint8_t Peek() const { return bytes_[position_]; }

  // Takes the next `count` bytes, which must exist, as a stretch of its own.
  ByteCursor Split(std::size_t count, std::string place);

 private:
  void Need_(std::size_t count, std::size_t start, const char* what) const;

  std::span<const std::uint8_t> bytes_;
  const std::string& name_;
  std::string place_;
  std::size_t base_ = 0;
  std::size_t position_ = 0;
};

}  // namespace tesk_midi
