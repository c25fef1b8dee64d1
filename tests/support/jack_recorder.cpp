#include "tests/support/jack_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "reference_suite/audio/device/uncancelled.h"

namespace test_support {

namespace {

// What one client of JACK writes into a port another reads behind it in the graph. The server sees to the
// order, through memory of its own that the thread sanitizer does not know.
__attribute__((noinline, no_sanitize("thread"))) float Arrived(const float* in, std::size_t frame) {
  return in[frame];
}

}  // namespace

JackRecorder::JackRecorder(const std::string& server, std::size_t frames, unsigned ports,
                           const std::string& name)
    : room_(frames) {
  for (unsigned port = 0; port < ports; ++port)
    kept_.push_back(std::make_unique_for_overwrite<float[]>(frames));
  const auto options = static_cast<jack_options_t>(JackNoStartServer | JackServerName);
  client_ = ::jack_client_open(name.c_str(), options, nullptr, server.c_str());
  if (client_ == nullptr) {
    ADD_FAILURE() << "the recorder finds no server";
    return;
  }
  inputs_.resize(ports);
  for (unsigned port = 1; port <= ports; ++port) {
    ports_.push_back(::jack_port_register(client_, ("in_" + std::to_string(port)).c_str(),
                                          JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0));
  }
  ::jack_set_process_callback(
      client_,
      [](jack_nframes_t count, void* self) {
        tesk_audio::RunUncancelled([&]() noexcept { static_cast<JackRecorder*>(self)->Process_(count); });
        return 0;
      },
      this);
  ::jack_set_freewheel_callback(
      client_,
      [](int starting, void* self) { static_cast<JackRecorder*>(self)->freewheels_ = starting != 0; }, this);
  ::jack_activate(client_);
}

JackRecorder::~JackRecorder() {
  if (client_ != nullptr) ::jack_client_close(client_);
}

void JackRecorder::Process_(jack_nframes_t frames) {
  const auto now = std::chrono::steady_clock::now();
  if (restart_.exchange(false)) count_ = 0;
  std::vector<const float*>& in = inputs_;
  for (std::size_t port = 0; port < ports_.size(); ++port) {
    in[port] = static_cast<const float*>(::jack_port_get_buffer(ports_[port], frames));
  }
  std::size_t count = count_;
  for (std::size_t i = 0; i < frames && count < room_; ++i) {
    const bool silent = Arrived(in[0], i) == 0.0F;
    if (silent && count > 0) ++lastSilence_;
    if (!silent) silence_ += std::exchange(lastSilence_, 0);
    if (silent && (count == 0 || kept_[0][count - 1] == 0.0F)) continue;
    for (std::size_t port = 0; port < ports_.size(); ++port) kept_[port][count] = Arrived(in[port], i);
    ++count;
  }
  ++periods_;
  ++changes_;
  count_ = count;
  newestAt_ = std::chrono::duration<double>(now.time_since_epoch()).count();
  ++changes_;
}

JackRecorder::Newest JackRecorder::GetNewest() const {
  for (;;) {
    const unsigned changes = changes_;
    const Newest newest{count_, newestAt_};
    if (changes % 2 == 0 && changes == changes_) return newest;
  }
}

std::vector<float> JackRecorder::GetFrames(unsigned port) const {
  const float* const kept = kept_.at(port).get();
  return {kept, kept + count_.load()};
}

void JackRecorder::SetFreewheel(bool freewheels) {
  ASSERT_EQ(::jack_set_freewheel(client_, freewheels ? 1 : 0), 0);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  const auto await = [&](const auto& condition) {
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_TRUE(condition());
  };
  await([&] { return freewheels_ == freewheels; });
  // Clients are told one after the other, and one may still be in a period from before, which the recorder
  // never gets.
  const long long periods = periods_;
  await([&] { return periods_ > periods + 2; });
}

std::vector<std::string> JackRecorder::GetSources(unsigned port) const {
  std::vector<std::string> names;
  const char** const sources = ::jack_port_get_all_connections(client_, ports_.at(port));
  for (const char** source = sources; source != nullptr && *source != nullptr; ++source) {
    names.emplace_back(*source);
  }
  if (sources != nullptr) ::jack_free(sources);
  return names;
}

void JackRecorder::Connect(const std::string& source, unsigned port) {
  ::jack_connect(client_, source.c_str(), ::jack_port_name(ports_.at(port)));
}

void JackRecorder::Disconnect(const std::string& source, unsigned port) {
  ::jack_disconnect(client_, source.c_str(), ::jack_port_name(ports_.at(port)));
}

void JackRecorder::DisconnectPorts(const std::string& source, const std::string& target) {
  ::jack_disconnect(client_, source.c_str(), target.c_str());
}

void JackRecorder::ConnectPorts(const std::string& source, const std::string& target) {
  ::jack_connect(client_, source.c_str(), target.c_str());
}

bool JackRecorder::HasPort(const std::string& name) const {
  return ::jack_port_by_name(client_, name.c_str()) != nullptr;
}

}  // namespace test_support
