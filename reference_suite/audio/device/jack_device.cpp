#include "reference_suite/audio/device/jack_device.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/audio/errors.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

// Frames that are fetched from the callback at a time; longer periods are fetched in several goes.
constexpr std::size_t kSliceFrames = kMostPeriodFrames;
constexpr long long kLookNanoseconds = 50'000'000;
constexpr double kUnheardSeconds = 0.3;
// A server that is started again may have its outputs a moment later, and connect later still.
constexpr double kConnectSeconds = 3.0;
// A connection shows a period or two after it is made.
constexpr double kAloneSeconds = 1.0;

double Seconds() {
  return static_cast<double>(MonotonicNow()) * 1e-9;
}

}  // namespace

JackDevice::JackDevice(const std::string& server, unsigned channels, std::shared_ptr<JackLinks> links)
    : client_(std::make_unique<JackClient>(server)),
      channels_(channels),
      rateHz_(client_->GetRateHz()),
      priority_(client_->GetRealTimePriority()),
      links_(std::move(links)),
      buffers_(channels),
      frames_(kSliceFrames * channels),
      period_(client_->GetPeriodFrames()) {
  RegisterPorts_();
  SetCallbacks_();
}

JackDevice::~JackDevice() {
  Stop();
  // First of all, since a server that is gone may have left its threads behind.
  client_.reset();
}

void JackDevice::RegisterPorts_() {
  for (unsigned channel = 1; channel <= channels_; ++channel) {
    const std::string name = "out_" + std::to_string(channel);
    jack_port_t* const port = ::jack_port_register(client_->Get(), name.c_str(), JACK_DEFAULT_AUDIO_TYPE,
                                                   JackPortIsOutput | JackPortIsTerminal, 0);
    if (port == nullptr) {
      throw TESKAudioError("The JACK server \"" + client_->GetServer() + "\" has no room for the port " +
                           name + ". Close other programs, or start it with more ports.");
    }
    ports_.push_back(port);
  }
}

std::string JackDevice::GetDescription() const {
  return "JACK server \"" + client_->GetServer() + "\", " + std::to_string(std::lround(rateHz_)) + " Hz, " +
         std::to_string(period_) + " frames a period";
}

std::string JackDevice::GetFailure() const {
  const std::lock_guard lock(mutex_);
  return failure_;
}

void JackDevice::Start(DeviceCallback& callback) {
  if (runs_) return;
  callback_ = &callback;
  stops_ = false;
  if (::jack_activate(client_->Get()) != 0) {
    throw TESKAudioError("The JACK server \"" + client_->GetServer() +
                         "\" does not start to ask for sound. Start it again.");
  }
  links_->Reopen();
  withOthers_.assign(channels_, Seconds());
  connectUntil_ = links_->GetRemembered().empty() ? 0.0 : Seconds() + kConnectSeconds;
  LookAfterLinks_();
  try {
    keeper_ = StartThread(&JackDevice::KeeperBody_, this, "The JACK output");
  } catch (...) {
    ::jack_deactivate(client_->Get());
    throw;
  }
  runs_ = true;
}

void JackDevice::Stop() {
  if (!runs_) return;
  stops_ = true;
  ::pthread_join(keeper_, nullptr);
  ::jack_deactivate(client_->Get());
  runs_ = false;
}

void* JackDevice::KeeperBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("JackLinks");
  static_cast<JackDevice*>(self)->KeepLinks_();
  return nullptr;
}

// Looks instead of being told: the notifications of different servers differ, and a look costs next to
// nothing.
void JackDevice::KeepLinks_() {
  while (!stops_) {
    SleepFor(kLookNanoseconds);
    try {
      if (!stops_ && !failed_) LookAfterLinks_();
    } catch (const std::exception&) {
      // No memory for the names: the next look may find some.
    }
  }
}

// A program that is started again between two looks has other ports of the same names.
void JackDevice::RenewPorts_() {
  std::vector<jack_port_id_t> ports;
  {
    const std::lock_guard lock(mutex_);
    ports.swap(newPorts_);
  }
  for (const jack_port_id_t id : ports) {
    const jack_port_t* const port = ::jack_port_by_id(client_->Get(), id);
    if (port != nullptr) links_->Renew(::jack_port_name(port));
  }
}

void JackDevice::LookAfterLinks_() {
  RenewPorts_();
  const std::vector<std::string> physical = client_->GetPhysicalInputs();
  const std::vector<std::string> inputs = client_->GetInputs();
  outputs_ = static_cast<unsigned>(physical.size());
  std::set<JackLink> links = GetLinks_();
  for (const auto& [channel, input] : links_->Observe(links, inputs, physical, Seconds())) {
    if (channel >= channels_) continue;
    const int result = ::jack_connect(client_->Get(), ::jack_port_name(ports_[channel]), input.c_str());
    // A program may have registered its ports and not be ready yet: tried again at the next look.
    if (result != 0 && result != EEXIST) links_->Renew(input);
    // It shows among the connections a period later.
    if (result != 0) continue;
    heardUntil_ = Seconds();
    links.insert({channel, input});
  }
  NoteTargetLatency_(links);
  NoteWhoHears_(inputs, links);
}

// Of the port that is heard last. The server tells our own ports only a period or two after they are
// connected, which is too late for the first frames.
void JackDevice::NoteTargetLatency_(const std::set<JackLink>& links) {
  unsigned latency = 0;
  for (const auto& [channel, input] : links) {
    jack_port_t* const port = ::jack_port_by_name(client_->Get(), input.c_str());
    if (port == nullptr) continue;
    jack_latency_range_t range{};
    ::jack_port_get_latency_range(port, JackPlaybackLatency, &range);
    latency = std::max(latency, range.max);
  }
  targetLatency_ = latency;
}

// A server that goes down takes the links away a moment before: that is told in other words.
void JackDevice::NoteWhoHears_(const std::vector<std::string>& inputs, const std::set<JackLink>& links) {
  const bool isHeard = !GetLinks_().empty();
  if (isHeard) heardUntil_ = Seconds();
  if (isHeard) connectUntil_ = 0.0;
  std::string unheard = isHeard || Seconds() < heardUntil_ + kUnheardSeconds ? "" : AdviceWhenUnheard_();
  std::string missing = isHeard ? AdviceOnMissing_(inputs, links) : "";
  const std::string alone = AdviceOnAlone_(links);
  if (isHeard && !alone.empty()) missing += (missing.empty() ? "" : " ") + alone;
  // What is missing stays so until the other words take its place.
  const bool isTold = isHeard || !unheard.empty();
  const std::lock_guard lock(mutex_);
  unheard_.swap(unheard);
  if (isTold) missing_.swap(missing);
  // Behind the words, which are read once this is known.
  connecting_ = Seconds() < connectUntil_;
}

// Not by the wish of anybody who has connected or disconnected it: `--channels` or `--connect` have named too
// few ports.
std::string JackDevice::AdviceOnAlone_(const std::set<JackLink>& links) {
  std::set<unsigned> wanted = links_->GetWantedChannels();
  for (const JackLink& link : links) wanted.insert(link.first);
  std::string advice;
  for (unsigned channel = 0; channel < channels_; ++channel) {
    if (wanted.contains(channel)) withOthers_[channel] = Seconds();
    if (Seconds() < withOthers_[channel] + kAloneSeconds) continue;
    if (!advice.empty()) advice += " ";
    const std::string number = std::to_string(channel + 1);
    advice += client_->GetName() + ":out_" + number + " is connected to nothing, so nobody hears channel " +
              number + ". Connect it by hand, or choose with --channels or --connect.";
  }
  return advice;
}

// What has just been connected was missing when it was looked for, and is not any more.
std::string JackDevice::AdviceOnMissing_(const std::vector<std::string>& inputs,
                                         const std::set<JackLink>& links) const {
  std::string advice;
  for (const auto& [channel, input] : links_->GetMissing()) {
    if (links.contains({channel, input})) continue;
    if (!advice.empty()) advice += " ";
    advice += client_->GetName() + ":out_" + std::to_string(channel + 1);
    if (std::find(inputs.begin(), inputs.end(), input) == inputs.end()) {
      advice += " is not heard at " + input +
                ", which is gone. Start its program again; it is connected by itself then.";
    } else {
      advice += " is not connected to " + input + ", so nobody hears it there. Connect it again by hand.";
    }
  }
  return advice;
}

std::string JackDevice::AdviceWhenUnheard_() const {
  const std::string what = "The JACK server \"" + client_->GetServer() +
                           "\" has our ports connected to nothing, so nobody hears it";
  if (links_->HasPatterns()) {
    return what + ": no port matches --connect. Start the program that is meant, or connect " +
           client_->GetName() + ":out_1 and so on by hand.";
  }
  if (outputs_ == 0) {
    return what +
           ": it has no physical outputs. Choose a program to play to with --connect, or start the server "
           "with the sound card.";
  }
  return what + ". Connect " + client_->GetName() +
         ":out_1 and so on by hand, or choose with --channels or "
         "--connect.";
}

std::string JackDevice::WhyUnheard() const {
  const std::lock_guard lock(mutex_);
  return unheard_;
}

std::string JackDevice::WhatIsMissing() const {
  const std::lock_guard lock(mutex_);
  return missing_;
}

std::set<JackLink> JackDevice::GetLinks_() const {
  std::set<JackLink> links;
  for (unsigned channel = 0; channel < channels_; ++channel) {
    const char** const inputs = ::jack_port_get_connections(ports_[channel]);
    for (const char** input = inputs; input != nullptr && *input != nullptr; ++input) {
      links.insert({channel, *input});
    }
    if (inputs != nullptr) ::jack_free(inputs);
  }
  return links;
}

}  // namespace tesk_audio
