#include "reference_suite/audio/decode/intake.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#include "reference_suite/audio/decode/decoding_stop.h"
#include "reference_suite/audio/decode/decoding_thread.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

constexpr std::size_t kFramesAtATime = 8192;
constexpr unsigned long long kMebibyte = 1024ULL * 1024ULL;
// How much is decoded between two looks at the memory that is left.
constexpr unsigned long long kCheckEveryBytes = 16 * kMebibyte;
// All bits of the exponent: infinities and what is not a number.
constexpr std::uint32_t kNotFinite = 0x7F800000U;

// Without branches, so that the compiler makes vector code of it: nearly always the answer is no.
bool HasNotFinite(const float* samples, std::size_t count) {
  std::uint32_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, samples + i, sizeof bits);
    found |= static_cast<std::uint32_t>((bits & kNotFinite) == kNotFinite);
  }
  return found != 0;
}

}  // namespace

std::size_t ReplaceNotFinite(float* samples, std::size_t count) {
  if (!HasNotFinite(samples, count)) return 0;
  std::size_t replaced = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isfinite(samples[i])) continue;
    samples[i] = 0.0F;
    ++replaced;
  }
  return replaced;
}

void RequireMemory(unsigned long long needed, const DecodeRequest& request) {
  const unsigned long long available = request.availableMemoryBytes();
  if (needed <= available) return;
  throw TESKAudioError(request.shownPath + ": decoding needs " + std::to_string(needed / kMebibyte + 1) +
                       " MiB of memory and only " + std::to_string(available / kMebibyte) +
                       " MiB are free. Close other programs, or split the recording.");
}

Intake::Intake(const DecodedFormat& format, const DecodeRequest& request)
    : format_(format),
      request_(request),
      rateHz_(request.rateHz > 0.0 ? request.rateHz : format.rateHz),
      store_(std::make_unique<FrameStore>(format.channels)),
      checkAt_(kCheckEveryBytes) {
  if (rateHz_ == format.rateHz) return;
  buffer_.resize(kFramesAtATime * format.channels);
  resampler_.emplace(format.rateHz, rateHz_, *store_);
}

bool Intake::TakeUntil(AudioDecoder& decoder, long long frames, const std::atomic<bool>* giveUp) {
  while (taken_ < frames) {
    if (giveUp != nullptr && *giveUp) return false;
    RequireWanted(request_.shownPath);
    DecodingThread::FollowPlaces();
    const std::size_t got = TakeSome_(decoder, frames - taken_);
    if (got == 0) return false;
    taken_ += static_cast<long long>(got);
    RequirePlayableLength(format_, taken_, request_);
    CheckMemory_();
  }
  return true;
}

std::size_t Intake::TakeSome_(AudioDecoder& decoder, long long most) {
  const std::size_t wanted = static_cast<std::size_t>(std::min<long long>(most, kFramesAtATime));
  if (!resampler_.has_value()) {
    std::size_t room = 0;
    float* const frames = store_->Room(&room);
    const std::size_t got = decoder.Read(frames, std::min(room, wanted));
    notFinite_ += ReplaceNotFinite(frames, got * format_.channels);
    store_->Added(got);
    return got;
  }
  const std::size_t got = decoder.Read(buffer_.data(), wanted);
  notFinite_ += ReplaceNotFinite(buffer_.data(), got * format_.channels);
  if (got > 0) resampler_->Put(buffer_.data(), got);
  return got;
}

void Intake::CheckMemory_() {
  const auto bytes = static_cast<unsigned long long>(store_->FrameCount()) * format_.channels * sizeof(float);
  if (bytes < checkAt_) return;
  RequireMemory(kCheckEveryBytes, request_);
  checkAt_ = bytes + kCheckEveryBytes;
}

void Intake::GoOnWith(long long frames, FrameStore&& next, std::size_t notFinite) {
  store_->Truncate(frames);
  store_->Append(std::move(next));
  taken_ = store_->FrameCount();
  notFinite_ = notFinite;
}

std::unique_ptr<MemoryContent> Intake::Finish() {
  if (resampler_.has_value()) resampler_->Finish();
  if (store_->FrameCount() == 0) RequirePlayableLength(format_, 0, request_);
  store_->Close();
  return std::make_unique<MemoryContent>(std::move(store_), rateHz_);
}

}  // namespace tesk_audio
