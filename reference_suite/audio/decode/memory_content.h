#pragma once

#include <memory>

#include "reference_suite/audio/decode/frame_store.h"
#include "suite/audio/audio_sample_content.h"

namespace tesk_audio {

// A song's audio, decoded completely: it plays on whatever happens to its file.
class MemoryContent : public AudioSampleContent {
 public:
  MemoryContent(std::unique_ptr<FrameStore> store, double rateHz);

  unsigned Read(long long start, long long* count, void* buffer) const override;
  unsigned GetSampleCount() const override { return static_cast<unsigned>(store_->FrameCount()); }
  double GetSampleRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return store_->ChannelCount(); }

 private:
  std::unique_ptr<FrameStore> store_;
  double rateHz_;
};

}  // namespace tesk_audio
