#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "reference_suite/audio/decode/audio_decoder.h"
#include "reference_suite/audio/decode/decode_content.h"
#include "reference_suite/audio/decode/frame_store.h"
#include "reference_suite/audio/decode/resampler.h"

namespace tesk_audio {

// Takes a decoder's frames, at its rate, into a store, at the rate asked for: straight from the one into the
// other where the rates agree. Samples that are not finite become 0.
//
// Threads    one at a time.
// Errors     what the decoder throws; TESKAudioError when memory is short, or decoding is to stop
//            (DecodingStop); std::bad_alloc.
class Intake {
 public:
  Intake(const DecodedFormat& format, const DecodeRequest& request);

  double RateHz() const { return rateHz_; }
  bool Resamples() const { return resampler_.has_value(); }

  // Decodes until `frames` of the decoder's frames have come. False when the decoder has no more, or `giveUp`
  // (may be null) became true.
  bool TakeUntil(AudioDecoder& decoder, long long frames, const std::atomic<bool>* giveUp = nullptr);
  long long Taken() const { return taken_; }
  // Of the samples taken.
  std::size_t NotFinite() const { return notFinite_; }

  FrameStore& Store() { return *store_; }
  // Drops what was taken behind `frames`, `notFinite` samples of which were not finite, and takes what other
  // intakes of the same file have from there on. Without resampling only.
  void GoOnWith(long long frames, FrameStore&& next, std::size_t notFinite);

  std::unique_ptr<FrameStore> Release() { return std::move(store_); }

  // After the last frame. Throws the decoder's own class when not one has come.
  std::unique_ptr<MemoryContent> Finish();

 private:
  std::size_t TakeSome_(AudioDecoder& decoder, long long most);
  void CheckMemory_();

  const DecodedFormat& format_;
  const DecodeRequest& request_;
  const double rateHz_;
  std::unique_ptr<FrameStore> store_;
  std::vector<float> buffer_;  // of the decoder's rate; only when resampling
  std::optional<Resampler> resampler_;
  long long taken_ = 0;
  std::size_t notFinite_ = 0;
  unsigned long long checkAt_;
};

// Replaces samples that are not finite by 0 and tells how many there were.
std::size_t ReplaceNotFinite(float* samples, std::size_t count);

// Throws TESKAudioError when that many bytes are not to be had.
void RequireMemory(unsigned long long needed, const DecodeRequest& request);

}  // namespace tesk_audio
