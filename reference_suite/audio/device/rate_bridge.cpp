#include "reference_suite/audio/device/rate_bridge.h"

#include <soxr.h>

#include <algorithm>
#include <cmath>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/start_thread.h"
#include "suite/audio/errors.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

// Frames that are fetched at a time.
constexpr std::size_t kBlock = 256;
constexpr long long kMillisecond = 1'000'000;
// What is ready beyond a period: the thread may be late by as much.
constexpr double kReadySeconds = 0.005;
// Binary logarithm of the shortest blocks that the converter works in. The longer ones that it prefers spare
// little and hold four times as much back.
constexpr unsigned kShortestBlock = 8;

}  // namespace

RateBridge::RateBridge(std::unique_ptr<Device> device, double rateHz)
    : device_(std::move(device)),
      rateHz_(rateHz),
      ring_(std::size_t{4} * kMostPeriodFrames, device_->GetChannelCount()),
      taken_(kBlock * device_->GetChannelCount()),
      converted_((static_cast<std::size_t>(kBlock * device_->GetRateHz() / rateHz) + kBlock) *
                 device_->GetChannelCount()) {
  const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
  const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
  soxr_runtime_spec_t blocks = soxr_runtime_spec(1);
  blocks.log2_min_dft_size = blocks.log2_large_dft_size = kShortestBlock;
  soxr_error_t error = nullptr;
  converter_ =
      soxr_create(rateHz_, device_->GetRateHz(), device_->GetChannelCount(), &error, &io, &quality, &blocks);
  if (error != nullptr) {
    throw TESKAudioError("The rate of the audio device cannot be converted: " + std::string(error) + ".");
  }
}

RateBridge::~RateBridge() {
  Stop();
  device_.reset();
  soxr_delete(converter_);
}

std::size_t RateBridge::GetWanted_() const {
  const auto ready = static_cast<std::size_t>(std::lround(kReadySeconds * device_->GetRateHz()));
  return std::min<std::size_t>(device_->GetPeriodFrames() + ready, 3 * kMostPeriodFrames);
}

unsigned RateBridge::GetLatencyFrames() const {
  const double held = device_->GetLatencyFrames() + static_cast<double>(ring_.GetAvailable()) + delay_;
  return static_cast<unsigned>(std::lround(held * rateHz_ / device_->GetRateHz()));
}

long long RateBridge::GetSilentFrames() const {
  return device_->GetSilentFrames() +
         std::llround(static_cast<double>(silent_) * rateHz_ / device_->GetRateHz());
}

std::string RateBridge::GetDescription() const {
  return device_->GetDescription() + ", converted from " + std::to_string(std::lround(rateHz_)) + " Hz";
}

void RateBridge::Start(DeviceCallback& callback) {
  if (runs_) return;
  callback_ = &callback;
  stops_ = false;
  hasBegun_ = false;
  device_->Start(*this);
  try {
    thread_ = StartRealTimeThread(&RateBridge::ThreadBody_, this, "The conversion for the audio device");
  } catch (...) {
    device_->Stop();
    throw;
  }
  runs_ = true;
}

void RateBridge::Stop() {
  if (!runs_) return;
  stops_ = true;
  ::pthread_join(thread_, nullptr);
  device_->Stop();
  runs_ = false;
}

void* RateBridge::ThreadBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("RateBridge");
  auto& bridge = *static_cast<RateBridge*>(self);
  GiveWayTo(bridge.GetRealTimePriority());
  bridge.Run_();
  return nullptr;
}

void RateBridge::Run_() {
  while (!stops_) {
    while (!stops_ && ring_.GetAvailable() < GetWanted_()) Fill_();
    hasBegun_ = true;
    SleepFor(kMillisecond);
  }
}

void RateBridge::Fill_() {
  if (HasTime_() && !callback_->IsReady(kBlock)) {
    SleepFor(kMillisecond / 20);
    return;
  }
  callback_->Process(taken_.data(), kBlock);
  std::size_t used = 0;
  std::size_t made = 0;
  const std::size_t room = converted_.size() / device_->GetChannelCount();
  soxr_process(converter_, taken_.data(), kBlock, &used, converted_.data(), room, &made);
  ring_.Write(converted_.data(), made);
  delay_ = std::max(0.0, soxr_delay(converter_));
}

// To wait for frames that are not there yet, instead of passing silence on before the device needs anything.
bool RateBridge::HasTime_() const {
  return IsFreewheeling() || ring_.GetAvailable() >= device_->GetPeriodFrames();
}

void RateBridge::Process(float* out, std::size_t frames) noexcept {
  const std::size_t count = std::min(frames, ring_.GetAvailable());
  ring_.Read(out, count);
  std::fill_n(out + count * device_->GetChannelCount(), (frames - count) * device_->GetChannelCount(), 0.0F);
  // Before it has been filled for the first time nothing is missing yet.
  if (hasBegun_) silent_ += static_cast<long long>(frames - count);
}

bool RateBridge::IsReady(std::size_t frames) const noexcept {
  return ring_.GetAvailable() >= frames;
}

}  // namespace tesk_audio
