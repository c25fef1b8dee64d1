#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "reference_suite/audio/decode/sample_pages.h"

namespace tesk_audio {

// Interleaved frames in memory, in blocks: it grows without moving what is there and without knowing its
// length beforehand. Threads    one writer, and readers after it has finished. Render     Read copies; it
// allocates nothing and waits for nothing.
class FrameStore {
 public:
  explicit FrameStore(unsigned channels);

  // Throws std::bad_alloc; what was appended before stays.
  void Append(const float* frames, std::size_t count);
  void AppendSilence(std::size_t count);
  // Where the next frames belong, for decoders that write straight into the store: room for at least one
  // frame; `room` receives for how many. They count once Added says so. Throws std::bad_alloc.
  float* Room(std::size_t* room);
  void Added(std::size_t count) { frames_ += static_cast<long long>(count); }
  // Takes the frames of another store over, without copying. This one must end with a full block.
  void Append(FrameStore&& next);
  // Drops what lies behind the first `count` frames.
  void Truncate(long long count);
  // Gives back the memory behind the last frame. Nothing may be appended afterwards.
  void Close();

  long long FrameCount() const { return frames_; }
  unsigned ChannelCount() const { return channels_; }
  // Frames of a full block.
  std::size_t BlockFrames() const { return blockFrames_; }
  // Copies frames `start` to `start + count`, all of which must be there.
  void Read(long long start, long long count, void* buffer) const;

 private:
  unsigned channels_;
  std::size_t blockFrames_;
  long long frames_ = 0;
  std::vector<std::unique_ptr<SamplePages>> blocks_;
};

}  // namespace tesk_audio
