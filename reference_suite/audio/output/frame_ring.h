#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tesk_audio {

// Frames on their way from one thread to another.
//
// Units      interleaved frames. Positions count all frames that ever passed, so that both sides can speak of
//            a frame long after or before it is in the ring; they never wrap in practice (2^64 frames).
// Threads    one writer and one reader, each its own operations. Several threads may take turns in either
//            part when a lock of theirs orders them.
// Render     no lock, no allocation, no wait.
class FrameRing {
 public:
  // Room for at least `frames`; behind them the last `kept` that were read stay.
  FrameRing(std::size_t frames, unsigned channels, std::size_t kept = 0);

  // ---- the writer
  std::uint64_t GetWritePosition() const { return write_.load(std::memory_order_acquire); }
  std::size_t GetFree() const;
  // `count` frames, for which there must be room.
  void Write(const float* frames, std::size_t count);

  // ---- the reader
  std::uint64_t GetReadPosition() const { return read_.load(std::memory_order_acquire); }
  std::size_t GetAvailable() const;
  // `count` frames, which must be available.
  void Read(float* frames, std::size_t count);
  // Passes over everything before `position`, which must have been written.
  void SkipTo(std::uint64_t position);
  // What was read from `position` on is to be read again: as much of it as is kept, and nothing that was
  // passed over or lies before it.
  void GoBackTo(std::uint64_t position);

 private:
  // Apart by what caches of common machines hand to and fro as one, so that neither side waits for the
  // other's.
  static constexpr std::size_t kApart = 64;

  alignas(kApart) std::atomic<std::uint64_t> read_{0};
  // The reader's. The writer goes by a position that was read at some time, so never behind what is kept.
  std::uint64_t furthest_ = 0;  // that was ever read to
  std::uint64_t skipped_ = 0;   // up to where frames were passed over last
  alignas(kApart) std::atomic<std::uint64_t> write_{0};
  std::size_t mask_;  // frames; one less than a power of two
  unsigned channels_;
  std::size_t kept_;
  std::vector<float> samples_;
};

}  // namespace tesk_audio
