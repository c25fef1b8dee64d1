#include "reference_suite/audio/device/resilient_device.h"

#include <utility>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr long long kMillisecond = 1'000'000;
constexpr long long kLook = 10 * kMillisecond;
// How long the first device may take to open, a new one to ask for its first frame, an old one to close at
// the end of the show.
constexpr long long kPatience = 2'000 * kMillisecond;
constexpr double kFadeInSeconds = 0.020;
// At once: each that hangs keeps a thread.
constexpr int kMostTries = 4;
constexpr char kNoAnswer[] = "The audio device does not answer.";

}  // namespace

ResilientDevice::ResilientDevice(const Shape& shape, DeviceSource source, Tell tell)
    : shape_(shape), source_(std::move(source)), tell_(std::move(tell)), period_(shape.periodFrames) {}

ResilientDevice::~ResilientDevice() {
  Stop();
}

std::string ResilientDevice::GetDescription() const {
  const std::lock_guard lock(mutex_);
  return description_;
}

std::string ResilientDevice::WhyUnheard() const {
  const std::lock_guard lock(mutex_);
  return unheard_;
}

std::string ResilientDevice::WhatIsMissing() const {
  const std::lock_guard lock(mutex_);
  return missing_;
}

void ResilientDevice::Start(DeviceCallback& callback) {
  if (runs_) return;
  callback_ = &callback;
  stops_ = false;
  try {
    BeginSearch_();
    WaitForFirst_();
    BeginWatching_();
  } catch (...) {
    // Nothing may ask a callback whose owner has been told that there is no device.
    CloseAll_();
    throw;
  }
}

void ResilientDevice::BeginWatching_() {
  thread_ = StartThread(&ResilientDevice::ThreadBody_, this, "The watch over the audio device");
  runs_ = true;
}

void ResilientDevice::WaitForFirst_() {
  const long long deadline = MonotonicNow() + kPatience;
  while (MonotonicNow() < deadline && search_->GetError().empty()) {
    RunningDevice found = search_->Take();
    if (found.device != nullptr) return TakeFirst_(std::move(found));
    SleepFor(kMillisecond);
  }
  recovering_ = true;
  StandIn_();
  Publish_();
  const std::string error = search_->GetError();
  away_ = error.empty() ? kNoAnswer : error;
  Tell_(true, away_);
}

// A show that began before it takes anything would stand at its first frame, and be said to play.
void ResilientDevice::TakeFirst_(RunningDevice found) {
  search_.reset();
  while (found.device->IsConnecting() && !found.device->HasFailed()) SleepFor(kMillisecond);
  found.gate->Open(0, 0);
  running_ = std::move(found);
  Publish_();
  if (!WhyUnheard().empty() || !WhatIsMissing().empty()) Tell_(false, "");
}

void ResilientDevice::Stop() {
  if (!runs_) return;
  stops_ = true;
  ::pthread_join(thread_, nullptr);
  runs_ = false;
  CloseAll_();
}

void ResilientDevice::CloseAll_() {
  search_.reset();
  for (RunningDevice* const each : {&running_, &candidate_, &standIn_}) {
    if (each->device == nullptr) continue;
    each->gate->Close();
    CloseDevice(std::move(*each), kPatience);
  }
}

void* ResilientDevice::ThreadBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("DeviceWatch");
  static_cast<ResilientDevice*>(self)->Run_();
  return nullptr;
}

void ResilientDevice::Run_() {
  while (!stops_) {
    SleepFor(kLook);
    try {
      Look_();
    } catch (const std::exception&) {
      // No thread or no memory for a search or for the clock: tried again at the next look.
    }
  }
}

void ResilientDevice::Look_() {
  const std::string unheard = WhyUnheard();
  const std::string missing = WhatIsMissing();
  if (running_.device != nullptr) {
    LookAtDevice_();
  } else {
    LookForDevice_();
  }
  Publish_();
  if (!recovering_ && (WhyUnheard() != unheard || WhatIsMissing() != missing)) Tell_(false, "");
}

void ResilientDevice::LookAtDevice_() {
  const Device& device = *running_.device;
  DeviceWatch::Look look;
  look.seconds = static_cast<double>(MonotonicNow()) * 1e-9;
  look.lastCall = running_.gate->GetLastCall();
  look.framesAsked = running_.gate->GetFramesAsked();
  look.periodFrames = device.GetPeriodFrames();
  look.rateHz = shape_.rateHz;
  look.patienceSeconds = device.GetPatienceSeconds();
  look.freewheels = device.IsFreewheeling();
  const DeviceWatch::Verdict verdict = watch_.Judge(look);
  if (device.HasFailed()) {
    Lose_(device.GetDescription() + ": " + device.GetFailure() + ".");
  } else if (verdict == DeviceWatch::Verdict::Silent) {
    Lose_(device.GetDescription() + ": it has stopped to ask for sound.");
  } else if (verdict == DeviceWatch::Verdict::TooFast) {
    Lose_(device.GetDescription() + ": it takes sound faster than time passes.");
  }
}

// Whatever is refused on the way (memory, a thread): the device is let go of once, and what is due is
// remembered for a clock that can only be had later.
void ResilientDevice::Lose_(const std::string& reason) {
  recovering_ = true;
  away_.clear();
  try {
    Tell_(true, reason);
  } catch (const std::exception&) {
    // No memory for the words: that it is recovering is known all the same.
  }
  running_.gate->Close();
  const long long due = running_.gate->GetDueTime();
  PublishCounts_(running_);
  xrunsBefore_ = xruns_;
  silentBefore_ = silent_;
  const bool goesOn = lossListener_ == nullptr || lossListener_->OnDeviceLost();
  standInDue_ = goesOn ? due : 0;
  CloseDevice(std::exchange(running_, {}), 0);
  StandIn_();
}

void ResilientDevice::StandIn_() {
  const long long due = standInDue_ == 0 ? MonotonicNow() : standInDue_;
  RunningDevice clock;
  clock.gate = std::make_unique<DeviceGate>(*callback_, shape_.channels, shape_.rateHz, nullptr);
  clock.device = std::make_unique<NullDevice>(shape_.rateHz, shape_.channels, shape_.periodFrames, due);
  clock.gate->Open(0, due);
  clock.device->Start(*clock.gate);
  standIn_ = std::move(clock);
  standInDue_ = 0;
}

void ResilientDevice::LookForDevice_() {
  if (standIn_.device == nullptr) StandIn_();
  if (candidate_.device == nullptr) {
    if (search_ == nullptr) BeginSearch_();
    candidate_ = search_->Take();
    candidateSince_ = MonotonicNow();
    if (candidate_.device == nullptr) {
      const bool hangs = search_->Hangs(static_cast<long long>(shape_.openSeconds * 1e9));
      TellWhyItStaysAway_(hangs);
      // An output that goes while it is opened is waited for in vain, and may be back under the same name.
      if (hangs && *tries_ < kMostTries) search_.reset();
      return;
    }
    search_.reset();
  }
  const bool asks = candidate_.gate->GetLastCall() != 0;
  const bool isInVain = !asks && MonotonicNow() - candidateSince_ > kPatience;
  if (candidate_.device->HasFailed() || isInVain) {
    CloseDevice(std::move(candidate_), 0);
    candidate_ = {};
  } else if (asks && !candidate_.device->IsConnecting()) {
    ChangeOver_(std::move(candidate_));
    candidate_ = {};
  }
}

// What has failed it says itself; what keeps it from coming back is another thing, and may change.
void ResilientDevice::TellWhyItStaysAway_(bool hangs) {
  std::string error = hangs ? kNoAnswer : search_->GetError();
  if (error.empty() || error == away_) return;
  away_.swap(error);
  Tell_(true, away_);
}

void ResilientDevice::BeginSearch_() {
  search_ = std::make_unique<DeviceSearch>(
      DeviceSearch::Wanted{source_, callback_, shape_.rateHz, shape_.channels, tries_});
}

void ResilientDevice::ChangeOver_(RunningDevice found) {
  // Before it takes its first frames: so many are to be ready, and heard so much later.
  period_ = found.device->GetPeriodFrames();
  latency_ = found.device->GetLatencyFrames();
  standIn_.gate->Close();
  found.gate->Open(static_cast<std::size_t>(kFadeInSeconds * shape_.rateHz), standIn_.gate->GetDueTime());
  watch_ = {};
  running_ = std::move(found);
  standIn_.device->Stop();
  standIn_ = {};
  // In this order: whoever sees that it is there again asks which it is.
  Publish_();
  recovering_ = false;
  Tell_(false, "");
}

void ResilientDevice::Publish_() {
  const RunningDevice& current = running_.device != nullptr ? running_ : standIn_;
  if (current.device == nullptr) return;
  period_ = current.device->GetPeriodFrames();
  latency_ = current.device->GetLatencyFrames();
  outputs_ = current.device->GetOutputCount();
  priority_ = current.device->GetRealTimePriority();
  PublishCounts_(current);
  std::string description = current.device->GetDescription();
  // In this order: when nothing is missing any more because nobody hears anything, both are known.
  std::string missing = current.device->WhatIsMissing();
  std::string unheard = current.device->WhyUnheard();
  const std::lock_guard lock(mutex_);
  description_.swap(description);
  unheard_.swap(unheard);
  missing_.swap(missing);
}

void ResilientDevice::PublishCounts_(const RunningDevice& running) {
  xruns_ = xrunsBefore_ + running.device->GetXrunCount();
  silent_ = silentBefore_ + running.device->GetSilentFrames() + running.gate->GetSilentFrames();
}

void ResilientDevice::Tell_(bool recovering, const std::string& reason) {
  if (!tell_) return;
  tell_({recovering, GetDescription(), reason, recovering ? "" : WhyUnheard(),
         recovering ? "" : WhatIsMissing()});
}

}  // namespace tesk_audio
