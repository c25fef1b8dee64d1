#pragma once

namespace tesk_audio {

// The decoded audio of one song: interleaved frames of 32-bit float, complete in memory.
// Threads    ANY, without a lock: it never changes after it was made.
// Render     Read copies; it allocates nothing and waits for nothing.
class AudioSampleContent {
 public:
  virtual ~AudioSampleContent() = default;

  // Copies up to `*count` frames from frame `start` on into `buffer` and writes back how many there were;
  // 0 past the end and for a negative start. Returns the same number.
  virtual unsigned Read(long long start, long long* count, void* buffer) const = 0;

  // Frames.
  virtual unsigned GetSampleCount() const = 0;
  // Frames per second, greater than 0.
  virtual double GetSampleRateHz() const = 0;
  virtual unsigned GetChannelCount() const = 0;
};

}  // namespace tesk_audio
