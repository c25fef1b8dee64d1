#pragma once

#include <cstddef>
#include <cstring>
#include <optional>

namespace test_support {

// The place of a virtual operation in its class's table of virtual operations, counted from 0; empty for an
// operation that is not virtual. A virtual destructor takes two places. Overloads need a cast to say which.
//
//   EXPECT_EQ(SlotIndex(&exc::ExLock::Lock), 0u);
//
// Reads the member pointer as the Itanium C++ ABI lays it out: 1 + the byte offset in the table, or, where
// the low bit of a code address is taken (ARM), the offset, and the mark in the adjustment.
template <typename MemberFunction>
std::optional<std::size_t> SlotIndex(MemberFunction function) {
  struct {
    std::ptrdiff_t target;
    std::ptrdiff_t adjustment;
  } parts;
  static_assert(sizeof(function) == sizeof(parts), "not the member pointer layout of the Itanium C++ ABI");
  std::memcpy(&parts, &function, sizeof(parts));
#if defined(__aarch64__) || defined(__arm__)
  if ((parts.adjustment & 1) == 0) return std::nullopt;
  return static_cast<std::size_t>(parts.target) / sizeof(void*);
#else
  if ((parts.target & 1) == 0) return std::nullopt;
  return static_cast<std::size_t>(parts.target - 1) / sizeof(void*);
#endif
}

}  // namespace test_support
