// Against a real JACK server without hardware. Exactness is asked for in freewheel alone, in which the server
// waits for every client.
#include "reference_suite/audio/device/jack_device.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <thread>
#include <utility>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/support/jack_recorder.h"
#include "tests/support/jack_server.h"
#include "tests/support/throws_with_text.h"

namespace {

// What the library was given last, so that a test can say what a server would.
std::pair<JackSampleRateCallback, void*> rateCallback;
void (*messageFunction)(const char*) = nullptr;
// How many threads have been cancelled.
std::atomic<int> cancelled{0};
// What opening a client answers without asking a server; 0: it asks one.
int refusal = 0;

template <typename Function>
Function* TheLibrarys(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int jack_set_sample_rate_callback(jack_client_t* client, JackSampleRateCallback callback, void* argument) {
  rateCallback = {callback, argument};
  return TheLibrarys<int(jack_client_t*, JackSampleRateCallback, void*)>("jack_set_sample_rate_callback")(
      client, callback, argument);
}

jack_client_t* jack_client_open(const char* name, jack_options_t options, jack_status_t* status, ...) {
  if (refusal != 0) {
    *status = static_cast<jack_status_t>(refusal);
    return nullptr;
  }
  // All clients here name their server.
  va_list arguments;
  va_start(arguments, status);
  const char* const server = va_arg(arguments, const char*);
  va_end(arguments);
  return TheLibrarys<jack_client_t*(const char*, jack_options_t, jack_status_t*, ...)>("jack_client_open")(
      name, options, status, server);
}

int pthread_cancel(pthread_t thread) {
  const int result = TheLibrarys<int(pthread_t)>("pthread_cancel")(thread);
  ++cancelled;
  return result;
}

void jack_set_error_function(void (*function)(const char*)) {
  messageFunction = function;
  TheLibrarys<void(void (*)(const char*))>("jack_set_error_function")(function);
}

}  // extern "C"

namespace {

using tesk_audio::JackDevice;
using tesk_audio::JackLinks;
using test_support::JackRecorder;
using test_support::JackServer;

// Frame n holds n + 1 on the first channel and the negative of it on the second, once it has been let go.
class Counter : public tesk_audio::DeviceCallback {
 public:
  explicit Counter(unsigned channels) : channels_(channels) {}

  void Process(float* out, std::size_t frames) noexcept override {
    ++calls;
    for (std::size_t i = 0; i < frames; ++i) {
      const float value = goes ? static_cast<float>(++count) : 0.0F;
      for (unsigned channel = 0; channel < channels_; ++channel) *out++ = channel == 0 ? value : -value;
    }
  }
  bool IsReady(std::size_t frames) const noexcept override {
    return !goes || count + static_cast<long long>(frames) <= ready;
  }

  std::atomic<bool> goes{false};
  std::atomic<long long> calls{0};
  std::atomic<long long> count{0};
  std::atomic<long long> ready{1'000'000'000};

 private:
  unsigned channels_;
};

const std::vector<std::string> kOurs{"orbel:out_1"};

std::shared_ptr<JackLinks> LinksTo(const std::vector<std::string>& patterns, unsigned channels = 1) {
  return std::make_shared<JackLinks>(tesk_audio::JackWishes{channels, {}, patterns});
}

std::vector<float> CountedTo(std::size_t last) {
  std::vector<float> frames;
  for (std::size_t frame = 1; frame <= last; ++frame) frames.push_back(static_cast<float>(frame));
  return frames;
}

TEST(JackDevice, WithoutAServerOpeningSaysWhatToDo) {
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [] { JackDevice device("nobody_is_called_so", 2, LinksTo({})); },
      "No JACK server \"nobody_is_called_so\" answers. Start it, or choose another output; \"orbel devices\" "
      "lists them."));
}

TEST(JackDevice, WhyAServerRefusesAClientIsSaidWithWhatToDo) {
  const std::pair<int, const char*> kRefusals[] = {
      {JackFailure | JackServerError,
       "does not answer a new client to the end, as one that has just been stopped or is about to end. If it "
       "stays so, start it again, or choose another output."},
      {JackFailure | JackClientZombie,
       "does not answer a new client to the end, as one that has just been stopped or is about to end. If it "
       "stays so, start it again, or choose another output."},
      {JackFailure | JackServerError | JackVersionError,
       "is of another version than the JACK library here. Install both from the same source."},
      {JackFailure | JackShmFailure,
       "cannot share memory with this program. Run both as the same user, and make room in /dev/shm."},
      {JackFailure,
       "takes no further client (status 1). Close other programs that play to it, start it again, or choose "
       "another output."}};
  for (const auto& [status, why] : kRefusals) {
    refusal = status;
    EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
        [] { JackDevice device("stage", 1, LinksTo({})); }, std::string("The JACK server \"stage\" ") + why));
  }
  refusal = 0;
}

TEST(JackDevice, NeverBearsTheNameOfItsServer) {
  EXPECT_EQ(tesk_audio::JackClientNameFor("default"), "orbel");
  EXPECT_NE(tesk_audio::JackClientNameFor("orbel"), "orbel");
}

TEST(JackDevice, TheServerDecidesRateAndPeriod) {
  JackServer server({.rateHz = 44100, .periodFrames = 512});
  JackDevice device(server.GetName(), 3, LinksTo({}, 3));
  EXPECT_EQ(device.GetRateHz(), 44100.0);
  EXPECT_EQ(device.GetPeriodFrames(), 512U);
  EXPECT_EQ(device.GetChannelCount(), 3U);
  EXPECT_EQ(device.GetDescription(),
            "JACK server \"" + server.GetName() + "\", 44100 Hz, 512 frames a period");
  EXPECT_FALSE(device.HasFailed());
  const JackRecorder looker(server.GetName(), 1);
  for (const char* const port : {"orbel:out_1", "orbel:out_2", "orbel:out_3"}) {
    EXPECT_TRUE(looker.HasPort(port)) << port;
  }
}

// Comes back much too late, once.
class LateOnce : public Counter {
 public:
  using Counter::Counter;
  void Process(float* out, std::size_t frames) noexcept override {
    Counter::Process(out, frames);
    if (isLate.exchange(false)) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  std::atomic<bool> isLate{false};
};

TEST(JackDevice, ADropoutThatTheServerReportsIsCounted) {
  const JackServer server;
  LateOnce counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({}));
  device.Start(counter);
  ASSERT_TRUE(Await([&] { return counter.calls > 3; }));
  // This machine may have been held up already.
  const long long before = device.GetXrunCount();
  counter.isLate = true;
  EXPECT_TRUE(Await([&] { return device.GetXrunCount() > before; }));
  device.Stop();
}

TEST(JackDevice, InFreewheelEveryFrameArrivesOnItsPort) {
  for (const unsigned period : {64U, 128U, 256U, 2048U}) {
    JackServer server({.periodFrames = period});
    JackRecorder recorder(server.GetName(), 100'000, 2);
    Counter counter(2);
    JackDevice device(server.GetName(), 2, LinksTo({"recorder:in_."}, 2));
    device.Start(counter);
    recorder.SetFreewheel(true);
    ASSERT_TRUE(Await([&] { return device.IsFreewheeling(); }));
    counter.goes = true;
    ASSERT_TRUE(Await([&] { return recorder.IsFull(); }));
    device.Stop();
    const std::vector<float> expected = CountedTo(100'000);
    EXPECT_TRUE(recorder.GetFrames() == expected) << "period " << period;
    std::vector<float> second = recorder.GetFrames(1);
    for (float& sample : second) sample = -sample;
    EXPECT_TRUE(second == expected) << "period " << period;
  }
}

TEST(JackDevice, InFreewheelItWaitsForFramesThatAreNotReadyYet) {
  JackServer server;
  JackRecorder recorder(server.GetName(), 10'000);
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({"recorder:in_1"}));
  device.Start(counter);
  recorder.SetFreewheel(true);
  ASSERT_TRUE(Await([&] { return device.IsFreewheeling(); }));
  counter.ready = 0;
  counter.goes = true;
  for (long long ready = 100; ready < 11'000; ready += 100) {
    counter.ready = ready;
    ASSERT_TRUE(Await([&] { return counter.count + 256 > ready; }));
    EXPECT_LE(counter.count, ready);
  }
  ASSERT_TRUE(Await([&] { return recorder.IsFull(); }));
  EXPECT_TRUE(recorder.GetFrames() == CountedTo(10'000));
}

TEST(JackDevice, TheLatencyOfWhatItPlaysToIsItsOwn) {
  JackServer server({.periodFrames = 256});
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({}));
  device.Start(counter);
  EXPECT_TRUE(Await([&] { return device.GetLatencyFrames() == 512; })) << device.GetLatencyFrames();
}

TEST(JackDevice, AServerThatIsKilledIsTold) {
  JackServer server;
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({}));
  device.Start(counter);
  ASSERT_TRUE(Await([&] { return counter.calls > 10; }));
  server.End(SIGKILL);
  ASSERT_TRUE(Await([&] { return device.HasFailed(); }));
  EXPECT_EQ(device.GetFailure(), "JACK server has been closed");
  device.Stop();
}

// No server of ours does that; others go on at another rate without a break.
TEST(JackDevice, AServerThatGoesOnAtAnotherRateIsLeft) {
  JackServer server({.rateHz = 48000});
  JackRecorder recorder(server.GetName(), 10'000'000);
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({"recorder:in_1"}));
  device.Start(counter);
  counter.goes = true;
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > 10; }));
  rateCallback.first(48'000, rateCallback.second);
  EXPECT_FALSE(device.HasFailed()) << "some tell the rate that there is, too";
  rateCallback.first(44'100, rateCallback.second);
  EXPECT_TRUE(device.HasFailed());
  EXPECT_EQ(device.GetFailure(), "its rate has changed to 44100 Hz");
  ASSERT_TRUE(Await([&] { return recorder.GetFrames().back() == 0.0F; })) << "never at the wrong pitch";
  EXPECT_EQ(static_cast<long long>(recorder.GetFrames()[recorder.GetCount() - 2]), counter.count)
      << "nothing more is taken";
  device.Stop();
}

std::string ConnectedToNothing(const JackServer& server) {
  return "The JACK server \"" + server.GetName() +
         "\" has our ports connected to nothing, so nobody hears it";
}

TEST(JackDevice, WhenNothingHearsItItSaysSoUntilSomethingDoes) {
  JackServer server;
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({"recorder:in_1"}));
  EXPECT_EQ(device.WhyUnheard(), "");
  device.Start(counter);
  const std::string unmatched = ConnectedToNothing(server) +
                                ": no port matches --connect. Start the program that is meant, or connect "
                                "orbel:out_1 and so on by hand.";
  EXPECT_EQ(device.WhyUnheard(), unmatched);
  {
    const JackRecorder recorder(server.GetName(), 1);
    EXPECT_TRUE(Await([&] { return device.WhyUnheard().empty(); }));
  }
  EXPECT_TRUE(Await([&] { return device.WhyUnheard() == unmatched; }));
  device.Stop();
}

TEST(JackDevice, WithNothingToConnectToItSaysWhatToDo) {
  JackServer server({.outputs = 0});
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({}));
  device.Start(counter);
  EXPECT_EQ(device.WhyUnheard(),
            ConnectedToNothing(server) +
                ": it has no physical outputs. Choose a program to play to with --connect, "
                "or start the server with the sound card.");
  device.Stop();
}

TEST(JackDevice, DisconnectedByHandItSaysWhatToDo) {
  JackServer server({.outputs = 2});
  JackRecorder other(server.GetName(), 1);
  Counter counter(1);
  JackDevice device(server.GetName(), 1,
                    std::make_shared<JackLinks>(tesk_audio::JackWishes{.channels = 1, .outputs = {1}}));
  device.Start(counter);
  EXPECT_EQ(device.WhyUnheard(), "");
  other.DisconnectPorts("orbel:out_1", "system:playback_1");
  EXPECT_TRUE(Await([&] { return !device.WhyUnheard().empty(); }));
  EXPECT_EQ(device.WhyUnheard(),
            ConnectedToNothing(server) +
                ". Connect orbel:out_1 and so on by hand, or choose with --channels or --connect.");
  device.Stop();
}

TEST(JackDevice, AConnectionThatIsTakenAwayIsMissedUntilItIsThereAgain) {
  JackServer server({.outputs = 2});
  JackRecorder other(server.GetName(), 1);
  Counter counter(2);
  JackDevice device(server.GetName(), 2, LinksTo({}, 2));
  device.Start(counter);
  EXPECT_EQ(device.WhatIsMissing(), "");
  other.DisconnectPorts("orbel:out_2", "system:playback_2");
  ASSERT_TRUE(Await([&] { return !device.WhatIsMissing().empty(); }));
  EXPECT_EQ(
      device.WhatIsMissing(),
      "orbel:out_2 is not connected to system:playback_2, so nobody hears it there. Connect it again by "
      "hand.");
  EXPECT_EQ(device.WhyUnheard(), "") << "the other one is heard";
  other.ConnectPorts("orbel:out_2", "system:playback_2");
  EXPECT_TRUE(Await([&] { return device.WhatIsMissing().empty(); }));
  other.DisconnectPorts("orbel:out_1", "system:playback_1");
  other.DisconnectPorts("orbel:out_2", "system:playback_2");
  EXPECT_TRUE(Await([&] { return !device.WhyUnheard().empty(); }));
  EXPECT_EQ(device.WhatIsMissing(), "") << "said in other words already";
  device.Stop();
}

TEST(JackDevice, WhatIsMissingIsSaidUntilItIsSaidThatNobodyHears) {
  JackServer server({.outputs = 2});
  JackRecorder other(server.GetName(), 1);
  Counter counter(2);
  JackDevice device(server.GetName(), 2, LinksTo({}, 2));
  device.Start(counter);
  other.DisconnectPorts("orbel:out_1", "system:playback_1");
  ASSERT_TRUE(Await([&] { return !device.WhatIsMissing().empty(); }));
  other.DisconnectPorts("orbel:out_2", "system:playback_2");
  ASSERT_TRUE(Await([&] { return device.WhatIsMissing().empty(); }));
  EXPECT_NE(device.WhyUnheard(), "") << "at no moment all seemed well";
  device.Stop();
}

TEST(JackDevice, AProgramThatGoesAwayIsMissedUntilItIsThereAgain) {
  JackServer server;
  auto recorder = std::make_unique<JackRecorder>(server.GetName(), 1);
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({"recorder:in_1", "system:playback_1"}));
  device.Start(counter);
  ASSERT_TRUE(Await([&] { return recorder->GetSources() == kOurs; }));
  recorder.reset();
  ASSERT_TRUE(Await([&] { return !device.WhatIsMissing().empty(); }));
  EXPECT_EQ(device.WhatIsMissing(),
            "orbel:out_1 is not heard at recorder:in_1, which is gone. Start its program again; it is "
            "connected by itself then.");
  recorder = std::make_unique<JackRecorder>(server.GetName(), 1);
  std::set<std::string> said;
  EXPECT_TRUE(Await([&] { return said.insert(device.WhatIsMissing()).first->empty(); }));
  EXPECT_THAT(said, testing::Each(testing::Not(testing::HasSubstr("by hand")))) << "nobody has to";
  EXPECT_EQ(recorder->GetSources(), kOurs);
  device.Stop();
}

TEST(JackDevice, AChannelThatIsNeverConnectedIsMissing) {
  JackServer server({.outputs = 2});
  JackRecorder other(server.GetName(), 1);
  Counter counter(2);
  // Each pattern begins with the first channel.
  JackDevice device(server.GetName(), 2, LinksTo({"system:playback_1", "system:playback_2"}, 2));
  device.Start(counter);
  EXPECT_TRUE(Await([&] { return !device.WhatIsMissing().empty(); }));
  EXPECT_EQ(
      device.WhatIsMissing(),
      "orbel:out_2 is connected to nothing, so nobody hears channel 2. Connect it by hand, or choose with "
      "--channels or --connect.");
  EXPECT_EQ(device.WhyUnheard(), "");
  other.ConnectPorts("orbel:out_2", "system:playback_2");
  EXPECT_TRUE(Await([&] { return device.WhatIsMissing().empty(); }));
  device.Stop();
}

TEST(JackDevice, ItKnowsThePriorityOfTheThreadOnWhichItAsks) {
  for (const unsigned priority : {0U, 20U, 70U}) {
    JackServer server({.priority = priority});
    const JackDevice device(server.GetName(), 1, LinksTo({}));
    EXPECT_EQ(device.GetRealTimePriority(), priority == 0 ? 0 : static_cast<int>(priority) - 5);
  }
}

TEST(JackDevice, BehindARestartTheSamePortsAreConnectedAgain) {
  const std::string name = JackServer::NewName();
  const auto links = LinksTo({"recorder:in_1"});
  Counter counter(1);
  for (int run = 0; run < 3; ++run) {
    JackServer server({}, name);
    JackRecorder recorder(name, 1, 2);
    JackDevice device(name, 1, links);
    device.Start(counter);
    EXPECT_TRUE(Await([&] { return recorder.GetSources(0) == kOurs; })) << "run " << run;
    // By hand, in the first run.
    if (run == 0) recorder.Connect("orbel:out_1", 1);
    EXPECT_TRUE(Await([&] { return recorder.GetSources(1) == kOurs; })) << "run " << run;
    ASSERT_TRUE(Await([&] { return links->GetRemembered().size() == 2; }));
    server.End(run % 2 == 0 ? SIGKILL : SIGTERM);
    ASSERT_TRUE(Await([&] { return device.HasFailed(); }));
    EXPECT_EQ(links->GetRemembered().size(), 2U);
  }
}

TEST(JackDevice, BehindARestartWhatWasConnectedIsWaitedForAWhile) {
  const std::string name = JackServer::NewName();
  const auto links = LinksTo({"recorder:in_1"});
  Counter counter(1);
  {
    const JackServer server({}, name);
    JackDevice device(name, 1, links);
    device.Start(counter);
    EXPECT_FALSE(device.IsConnecting()) << "nobody has heard it yet";
    const JackRecorder recorder(name, 1);
    ASSERT_TRUE(Await([&] { return links->GetRemembered().size() == 1; }));
  }
  for (const bool comesBack : {true, false}) {
    const JackServer server({}, name);
    JackDevice device(name, 1, links);
    EXPECT_FALSE(device.IsConnecting());
    device.Start(counter);
    if (comesBack) {
      EXPECT_TRUE(device.IsConnecting());
      const JackRecorder recorder(name, 1);
      EXPECT_TRUE(Await([&] { return !device.IsConnecting(); }));
      EXPECT_EQ(device.WhyUnheard(), "");
      EXPECT_EQ(recorder.GetSources(), kOurs);
    } else {
      EXPECT_TRUE(Await([&] { return !device.IsConnecting(); })) << "not for ever";
      EXPECT_NE(device.WhyUnheard(), "");
    }
  }
}

TEST(JackDevice, APortThatComesBackIsConnectedAgain) {
  JackServer server;
  Counter counter(1);
  JackDevice device(server.GetName(), 1, LinksTo({"recorder:in_1"}));
  device.Start(counter);
  for (int run = 0; run < 2; ++run) {
    const JackRecorder recorder(server.GetName(), 1);
    EXPECT_TRUE(Await([&] { return recorder.GetSources() == kOurs; }));
  }
}

// Is in the middle of a period when its thread is cancelled.
class Late : public tesk_audio::DeviceCallback {
 public:
  void Process(float* out, std::size_t frames) noexcept override {
    std::fill_n(out, frames, 0.0F);
    if (wasCancelled) return;
    hasBegun = true;
    if (!Await([] { return cancelled > 0; })) return;
    // What is left of a period takes a moment, and nothing in it may be unwound.
    for (std::size_t i = 0; i < 1'000 * frames; ++i) out[i % frames] += 1.0F;
    wasCancelled = true;
  }
  std::atomic<bool> hasBegun{false};
  std::atomic<bool> wasCancelled{false};
};

// The library cancels its thread when the client is closed, wherever that is.
TEST(JackDevice, APeriodThatHasBegunIsEndedBeforeItsThreadIs) {
  JackServer server;
  Late late;
  cancelled = 0;
  {
    JackDevice device(server.GetName(), 1, LinksTo({}));
    device.Start(late);
    ASSERT_TRUE(Await([&] { return late.hasBegun.load(); }));
  }
  EXPECT_GT(cancelled, 0);
  EXPECT_TRUE(late.wasCancelled);
}

TEST(JackDevice, NothingThatTheLibraryPrintsReachesTheTerminal) {
  tesk_audio::TakeJackMessages();
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  EXPECT_THROW(JackDevice("nobody_is_called_so", 2, LinksTo({})), tesk_audio::TESKAudioError);
  EXPECT_EQ(testing::internal::GetCapturedStderr() + testing::internal::GetCapturedStdout(), "");
  EXPECT_THAT(tesk_audio::TakeJackMessages(), testing::Not(testing::IsEmpty()));
}

// A client that hangs is closed by a thread that nobody waits for.
TEST(JackDeviceDeathTest, WhatTheLibrarySaysWhenTheProgramHasEndedFindsItsPlace) {
  const auto runOut = [] {
    // Before anything of ours is made, and so after everything of ours is taken down.
    std::atexit([] {
      messageFunction("too late");
      const std::vector<std::string> messages = tesk_audio::TakeJackMessages();
      ::_exit(messages.size() > 1 && messages.back() == "too late" ? 7 : 8);
    });
    EXPECT_THROW(JackDevice("nobody_is_called_so", 2, LinksTo({})), tesk_audio::TESKAudioError);
    std::exit(0);
  };
  EXPECT_EXIT(runOut(), testing::ExitedWithCode(7), "");
}

}  // namespace
