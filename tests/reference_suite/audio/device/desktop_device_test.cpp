// Against a sound system of the test's own, which takes the place of the library.
#include "reference_suite/audio/device/desktop_device.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/fake_soundio.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_audio::DesktopDevice;
using tesk_audio::OutputSettings;
using tesk_audio::TESKAudioError;

constexpr double kRate = 48'000.0;

class Counter : public tesk_audio::DeviceCallback {
 public:
  void Process(float* out, std::size_t frames) noexcept override {
    for (std::size_t i = 0; i < frames; ++i) out[i] = 0.5F;
    count += static_cast<long long>(frames);
  }
  long long count = 0;
};

class Desktop : public testing::Test {
 protected:
  Desktop() {
    ::setenv("PULSE_SERVER", "of the test", 1);
    system_.Add("Built in", "pci");
    system_.Add("Stage", "usb");
    system_.usual = 1;
  }

  std::unique_ptr<DesktopDevice> Open(const std::string& name = "") {
    OutputSettings settings;
    settings.deviceName = name;
    settings.periodFrames = 256;
    return std::make_unique<DesktopDevice>(settings, kRate, 1, chosen_);
  }

  FakeSystem system_;
  std::shared_ptr<DesktopDevice::Chosen> chosen_ = std::make_shared<DesktopDevice::Chosen>();
  Counter counter_;
};

TEST_F(Desktop, TheOutputThatWasOpenedFirstIsOpenedAgainAndNoOther) {
  Open();
  EXPECT_EQ(system_.opened, "usb");
  const FakeSystem::Output stage = system_.outputs.back();
  system_.outputs.pop_back();
  system_.usual = 0;
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>(
      [&] { Open(); },
      "The output \"Stage\" is not there any more. Plug it in again, or choose another output."));
  EXPECT_EQ(system_.opened, "usb");
  system_.outputs.clear();
  system_.Add("Built in", "pci");
  system_.Add("Other", "hdmi");
  system_.Add(stage.name, stage.id);
  Open();
  EXPECT_EQ(system_.opened, "usb");
}

TEST_F(Desktop, AnOutputIsChosenByItsNameOrTheSystemsOwn) {
  Open("Built in");
  EXPECT_EQ(system_.opened, "pci");
  chosen_->id.clear();
  Open("usb");
  EXPECT_EQ(system_.opened, "usb");
  chosen_->id.clear();
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>(
      [&] { Open("trumpet"); },
      "There is no output \"trumpet\" on this desktop; \"orbel devices\" lists what there is."));
}

TEST_F(Desktop, WithoutAnOutputNothingAnswers) {
  const char* const problem =
      "The sound of the desktop has no output. Plug a loudspeaker or a sound card in, or choose another "
      "output.";
  system_.outputs.clear();
  system_.usual = -1;
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>([&] { Open(); }, problem));
  const std::vector<tesk_audio::DeviceInfo> found = tesk_audio::LookAtDesktop();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].kind, tesk_audio::DeviceKind::Desktop);
  EXPECT_FALSE(found[0].answers);
  EXPECT_EQ(found[0].problem, problem);
}

TEST_F(Desktop, ASoundSystemThatDiesWhileItIsLookedAtDoesNotAnswer) {
  const char* const problem =
      "Neither PulseAudio nor ALSA answers. Log in to a desktop with sound, plug a sound card in, or choose "
      "another output.";
  system_.dies = true;
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>([&] { Open(); }, problem));
  EXPECT_EQ(tesk_audio::LookAtDesktop().at(0).problem, problem);
}

TEST_F(Desktop, AStreamThatHasRunDryGoesOnAndIsCounted) {
  const auto device = Open();
  device->Start(counter_);
  system_.beginError = SoundIoErrorUnderflow;
  system_.Ask(256);
  EXPECT_EQ(counter_.count, 0);
  system_.beginError = 0;
  system_.endError = SoundIoErrorUnderflow;
  system_.Ask(256);
  EXPECT_EQ(counter_.count, 256);
  EXPECT_EQ(device->GetXrunCount(), 2);
  EXPECT_FALSE(device->HasFailed());
}

TEST_F(Desktop, EveryOtherErrorOfAStreamIsItsEnd) {
  for (int* const error : {&system_.beginError, &system_.endError}) {
    const auto device = Open();
    device->Start(counter_);
    system_.Ask(256);
    EXPECT_FALSE(device->HasFailed());
    *error = SoundIoErrorStreaming;
    system_.Ask(256);
    *error = 0;
    EXPECT_TRUE(device->HasFailed());
    EXPECT_EQ(device->GetFailure(), "the sound system has ended the stream");
  }
}

TEST_F(Desktop, AStreamMayAskWhileItIsBeingClosed) {
  const auto device = Open();
  device->Start(counter_);
  system_.asksToTheLast = true;
  device->Stop();
  EXPECT_EQ(counter_.count, 256);
}

TEST_F(Desktop, AnOutputThatIsUnpluggedFailsAlthoughTheStreamIsTaken) {
  const auto device = Open();
  device->Start(counter_);
  EXPECT_FALSE(device->HasFailed());
  system_.isBare = true;
  ASSERT_TRUE(Await([&] { return device->HasFailed(); }));
  EXPECT_EQ(device->GetFailure(), "it has been unplugged");
}

TEST_F(Desktop, AStandInForAnOutputAnswersNobodyButWhoNamesIt) {
  const char* const unheard =
      "Nobody hears \"Dummy\": it stands in while there is no output. Plug a loudspeaker or a sound card in, "
      "or "
      "choose another output.";
  system_.outputs.clear();
  system_.Add("Dummy", "auto_null");
  system_.usual = 0;
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>(
      [&] { Open(); },
      "The sound of the desktop has no output. Plug a loudspeaker or a sound card in, or choose another "
      "output."));
  const std::vector<tesk_audio::DeviceInfo> found = tesk_audio::LookAtDesktop();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_FALSE(found[0].answers);
  EXPECT_EQ(found[0].problem, unheard);
  EXPECT_EQ(Open("Dummy")->WhyUnheard(), unheard);
  system_.Add("Stage", "usb");
  chosen_->id.clear();
  EXPECT_EQ(Open("Stage")->WhyUnheard(), "");
}

TEST_F(Desktop, ItIsWaitedForAsLongAsWhatItHoldsLasts) {
  const auto device = Open();
  device->Start(counter_);
  EXPECT_EQ(device->GetPatienceSeconds(), 2.5);
  system_.Ask(48);
  EXPECT_EQ(device->GetPatienceSeconds(), 2.5) << "a server that was idle may ask for little at first";
  for (int i = 0; i < 32; ++i) system_.Ask(48);
  EXPECT_NEAR(device->GetPatienceSeconds(), 0.5 + 0.033, 0.002) << "once its pace is known";
  // As a server does that was idle.
  system_.Ask(200'000);
  EXPECT_EQ(device->GetPatienceSeconds(), 2.5);
}

// A server that was idle fills its buffer at once and begins to play it when it likes: up to two seconds
// later, or never.
TEST_F(Desktop, ItIsBeingConnectedUntilItAsksForMoreThanItsBuffer) {
  const auto device = Open();
  EXPECT_FALSE(device->IsConnecting());
  device->Start(counter_);
  EXPECT_TRUE(device->IsConnecting());
  system_.Ask(512);
  EXPECT_TRUE(device->IsConnecting());
  system_.Ask(256);
  EXPECT_FALSE(device->IsConnecting());
  EXPECT_FALSE(device->HasFailed());
  device->Stop();
  device->Start(counter_);
  system_.Ask(512);
  EXPECT_TRUE(device->IsConnecting()) << "it is another stream";
  EXPECT_TRUE(Await([&] { return device->HasFailed(); }));
  EXPECT_FALSE(device->IsConnecting());
  EXPECT_EQ(device->GetFailure(), "it does not begin to take sound");
}

TEST_F(Desktop, AChannelForWhichNoOutputIsNamedIsMissing) {
  const auto missing = [&](unsigned channels, const std::vector<unsigned>& outputs) {
    OutputSettings settings;
    settings.outputs = outputs;
    return DesktopDevice(settings, kRate, channels, chosen_).WhatIsMissing();
  };
  EXPECT_EQ(missing(2, {}), "");
  EXPECT_EQ(missing(2, {2, 1}), "");
  EXPECT_EQ(missing(1, {2}), "");
  EXPECT_EQ(missing(2, {1}),
            "Nobody hears channel 2: --channels names no output for it. Name one for each channel.");
  EXPECT_EQ(missing(4, {1, 2}),
            "Nobody hears channels 3 to 4: --channels names no output for them. Name one for each channel.");
}

TEST_F(Desktop, ThePeriodIsWhatItTakesAtATimeAndNotWhatFillsItsBuffer) {
  const auto device = Open();
  device->Start(counter_);
  EXPECT_EQ(device->GetPeriodFrames(), 256U) << "as wished, before anything is known";
  system_.Ask(96'000);
  EXPECT_EQ(device->GetPeriodFrames(), 256U);
  const auto due = tesk_audio::MonotonicNow() + 20'000'000;
  while (tesk_audio::MonotonicNow() < due) {
  }
  system_.Ask(960);
  EXPECT_EQ(device->GetPeriodFrames(), 960U) << "twenty milliseconds at least had passed";
  for (int i = 0; i < 64; ++i) system_.Ask(100);
  EXPECT_EQ(device->GetPeriodFrames(), 100U) << "of late";
}

TEST_F(Desktop, AThreadThatCannotBeStartedIsTold) {
  const auto device = Open();
  const test_support::NoThreads none;
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>(
      [&] { device->Start(counter_); },
      "The desktop output cannot start its thread: Resource temporarily unavailable. Close other programs."));
}

}  // namespace
