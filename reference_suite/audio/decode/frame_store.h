#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace tesk_audio {

// Interleaved frames in memory, in blocks: it grows without moving what is there and without knowing its
// length beforehand. Threads    one writer, and readers after it has finished. Render     Read copies; it
// allocates nothing and waits for nothing.
class FrameStore {
 public:
  explicit FrameStore(unsigned channels) : channels_(channels) {}

  // Throws std::bad_alloc; what was appended before stays.
  void Append(const float* frames, std::size_t count);
  void AppendSilence(std::size_t count);
  // Drops what lies behind the first `count` frames.
  void Truncate(long long count);

  long long FrameCount() const { return frames_; }
  unsigned ChannelCount() const { return channels_; }
  // Copies frames `start` to `start + count`, all of which must be there.
  void Read(long long start, long long count, void* buffer) const;

  static constexpr std::size_t kBlockFrames = 65536;

 private:
  // Room for at least one frame at the end; `room` receives for how many.
  float* Tail_(std::size_t* room);

  unsigned channels_;
  long long frames_ = 0;
  std::vector<std::unique_ptr<float[]>> blocks_;
};

}  // namespace tesk_audio
