#pragma once

#include <cstddef>
#include <mutex>

namespace orbel::host {

// Memory that is set apart from the start, for when the system refuses more: addresses, and on a system that
// counts every byte the bytes too. One that grants what it does not have refuses nobody, and this neither.
// First fit in the order of addresses; what is given back joins what is free beside it. Of static storage
// alone: it is not made, it is there.
//
// Threads    ANY; one lock of its own, innermost, held for a walk over its pieces.
// Errors     none; nullptr where there is no room.
class MemoryReserve {
 public:
  // What some forty decoders of Ogg Vorbis take (0.2 MB each), the hungriest of those that use it.
  static constexpr std::size_t kBytes = std::size_t{8} << 20;

  // Aligned for every type; `bytes` may be 0.
  void* Allocate(std::size_t bytes) noexcept;
  void Free(void* memory) noexcept;
  bool Holds(const void* memory) const noexcept;
  // How many bytes there are at `memory`, at least as many as were asked for.
  static std::size_t SizeOf(const void* memory) noexcept;
  // Around a fork: no other thread is inside meanwhile.
  void Lock() noexcept { mutex_.lock(); }
  void Unlock() noexcept { mutex_.unlock(); }

 private:
  struct alignas(std::max_align_t) Piece {
    std::size_t bytes;  // behind this; 0 before anything has been allocated
    bool isTaken;
  };
  Piece* First_() noexcept;
  // nullptr behind the last one.
  Piece* Next_(Piece* piece) noexcept;
  void JoinFreeBehind_(Piece* piece) noexcept;
  static void Split_(Piece* piece, std::size_t bytes) noexcept;

  std::mutex mutex_;  // guards what is below
  alignas(std::max_align_t) std::byte bytes_[kBytes] = {};
};

}  // namespace orbel::host
