#include "reference_suite/audio/decode/resampler.h"

#include <soxr.h>

#include <cmath>
#include <string>

#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

constexpr std::size_t kOutputFrames = 8192;

void RequireNoError(soxr_error_t error) {
  if (error == nullptr) return;
  throw TESKAudioError(std::string("The sample rate cannot be converted: ") + error + ".");
}

}  // namespace

Resampler::Resampler(double fromHz, double toHz, FrameStore& store)
    : fromHz_(fromHz), toHz_(toHz), store_(store), output_(kOutputFrames * store.ChannelCount()) {
  const soxr_io_spec_t samples = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
  const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
  // One thread: the loader's. Songs are decoded side by side anyway.
  const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  soxr_error_t error = nullptr;
  converter_ = soxr_create(fromHz, toHz, store.ChannelCount(), &error, &samples, &quality, &runtime);
  RequireNoError(error);
}

Resampler::~Resampler() {
  soxr_delete(converter_);
}

void Resampler::Put(const float* frames, std::size_t count) {
  taken_ += static_cast<long long>(count);
  Process_(frames, count);
}

void Resampler::Finish() {
  Process_(nullptr, 0);
  const long long length = ResampledLength(taken_, fromHz_, toHz_);
  store_.Truncate(length);
  store_.AppendSilence(static_cast<std::size_t>(length - store_.FrameCount()));
}

void Resampler::Process_(const float* frames, std::size_t count) {
  std::size_t used = 0;
  std::size_t made = 0;
  do {
    std::size_t usedNow = 0;
    const float* from = frames == nullptr ? nullptr : frames + used * store_.ChannelCount();
    RequireNoError(
        soxr_process(converter_, from, count - used, &usedNow, output_.data(), kOutputFrames, &made));
    used += usedNow;
    // Samples near the largest number overflow in the filter.
    for (std::size_t sample = 0; sample < made * store_.ChannelCount(); ++sample) {
      if (!std::isfinite(output_[sample])) output_[sample] = 0.0F;
    }
    store_.Append(output_.data(), made);
  } while (used < count || made > 0);
}

long long ResampledLength(long long frames, double fromHz, double toHz) {
  const long double exact = static_cast<long double>(frames) * toHz / fromHz;
  // What no 64-bit count can hold is longer than any song may be, and is refused as that.
  if (exact > 9.0e18L) return 9'000'000'000'000'000'000LL;
  return std::llround(exact);
}

}  // namespace tesk_audio
