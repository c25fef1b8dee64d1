#include "reference_suite/audio/decode/decode_content.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "exc/console/cout_buffer.h"
#include "reference_suite/audio/decode/resampler.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

constexpr std::size_t kFramesAtATime = 8192;
constexpr unsigned long long kMebibyte = 1024ULL * 1024ULL;
// How much is decoded between two looks at the memory that is left.
constexpr unsigned long long kCheckEveryBytes = 16 * kMebibyte;

void Warn(const DecodeRequest& request, const std::string& text) {
  exc::CoutBuffer() << "WARNING: " << request.shownPath << ": " << text << "." << exc::EndlT();
}

void RequireMemory(unsigned long long needed, const DecodeRequest& request) {
  const unsigned long long available = request.availableMemoryBytes();
  if (needed <= available) return;
  throw TESKAudioError(request.shownPath + ": decoding needs " + std::to_string(needed / kMebibyte + 1) +
                       " MiB of memory and only " + std::to_string(available / kMebibyte) +
                       " MiB are free. Close other programs, or split the recording.");
}

std::size_t ReplaceNonFinite(std::vector<float>& samples, std::size_t count) {
  std::size_t replaced = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isfinite(samples[i])) continue;
    samples[i] = 0.0F;
    ++replaced;
  }
  return replaced;
}

// Takes the decoder's frames, at its rate, into the store, at the rate asked for.
class Intake {
 public:
  Intake(const DecodedFormat& format, const DecodeRequest& request)
      : format_(format), request_(request), store_(std::make_unique<FrameStore>(format.channels)) {
    if (RateHz() != format.rateHz) resampler_.emplace(format.rateHz, RateHz(), *store_);
  }

  double RateHz() const { return request_.rateHz > 0.0 ? request_.rateHz : format_.rateHz; }

  void Put(const float* frames, std::size_t count) {
    taken_ += static_cast<long long>(count);
    RequirePlayableLength(format_, taken_, request_);
    if (resampler_.has_value()) {
      resampler_->Put(frames, count);
    } else {
      store_->Append(frames, count);
    }
    const auto bytes =
        static_cast<unsigned long long>(store_->FrameCount()) * format_.channels * sizeof(float);
    if (bytes < checkAt_) return;
    RequireMemory(kCheckEveryBytes, request_);
    checkAt_ = bytes + kCheckEveryBytes;
  }

  std::unique_ptr<MemoryContent> Finish() {
    if (resampler_.has_value()) resampler_->Finish();
    if (store_->FrameCount() == 0) RequirePlayableLength(format_, 0, request_);
    return std::make_unique<MemoryContent>(std::move(store_), RateHz());
  }

 private:
  const DecodedFormat& format_;
  const DecodeRequest& request_;
  std::unique_ptr<FrameStore> store_;
  std::optional<Resampler> resampler_;
  long long taken_ = 0;
  unsigned long long checkAt_ = kCheckEveryBytes;
};

}  // namespace

void RequirePlayableLength(const DecodedFormat& format, long long frames, const DecodeRequest& request) {
  if (frames == 0) {
    ThrowUndecodable(format.isOgg, request.shownPath + ": the " + format.name +
                                       " file holds no audio: not one frame could be decoded. Export the "
                                       "recording again.");
  }
  const bool converts = request.rateHz > 0.0 && request.rateHz != format.rateHz;
  const long long length = converts ? ResampledLength(frames, format.rateHz, request.rateHz) : frames;
  if (length <= request.maxFrames) return;
  ThrowUndecodable(format.isOgg, request.shownPath + ": " + std::to_string(length) +
                                     " frames are more than the " + std::to_string(request.maxFrames) +
                                     " that a song can have. Split the recording.");
}

std::unique_ptr<MemoryContent> DecodeContent(AudioDecoder& decoder, const DecodeRequest& request) {
  const DecodedFormat& format = decoder.Format();
  Intake intake(format, request);
  if (format.frames > 0) {
    RequirePlayableLength(format, format.frames, request);
    const long long length = ResampledLength(format.frames, format.rateHz, intake.RateHz());
    RequireMemory(static_cast<unsigned long long>(length) * format.channels * sizeof(float), request);
  }
  decoder.Inspect();
  std::vector<float> buffer(kFramesAtATime * format.channels);
  std::size_t replaced = 0;
  while (const std::size_t got = decoder.Read(buffer.data(), kFramesAtATime)) {
    replaced += ReplaceNonFinite(buffer, got * format.channels);
    intake.Put(buffer.data(), got);
  }
  std::unique_ptr<MemoryContent> content = intake.Finish();
  for (const std::string& text : decoder.Warnings()) Warn(request, text);
  if (replaced > 0)
    Warn(request, std::to_string(replaced) + " samples that are not finite are replaced by 0");
  if (intake.RateHz() != format.rateHz) {
    Warn(request, "its " + std::to_string(std::lround(format.rateHz)) + " Hz are resampled to " +
                      std::to_string(std::lround(intake.RateHz())) + " Hz");
  }
  return content;
}

}  // namespace tesk_audio
