// The factory and the settings that it follows.
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <vector>

#include "reference_suite/audio/output/live_sample_output.h"
#include "reference_suite/audio/output/offline_sample_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "suite/audio/create.h"
#include "suite/audio/errors.h"
#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/support/staircase_content.h"
#include "tests/support/throws_with_text.h"

namespace {

class CreateOutput : public testing::Test {
 protected:
  ~CreateOutput() override { tesk_audio::ConfigureOutput({}); }

  std::unique_ptr<tesk_audio::AudioSampleOutput> Create(double rateHz, unsigned channels) {
    const test_support::StaircaseContent content(10, rateHz, channels);
    return std::unique_ptr<tesk_audio::AudioSampleOutput>(
        tesk_audio::CreateAudioSampleOutput(content, player_));
  }

  ScriptedPlayer player_{Songs{{}}};
};

TEST_F(CreateOutput, ListenersAreToldHowALiveOutputIsDoing) {
  std::mutex mutex;
  std::vector<notify::MetersUpdate> told;
  notify::callbackDispatcher.Add(this, notify::names::audio_meters, [&](void* update) {
    const std::lock_guard lock(mutex);
    told.push_back(*static_cast<notify::MetersUpdate*>(update));
  });
  const auto count = [&] {
    const std::lock_guard lock(mutex);
    return told.size();
  };
  {
    const auto output = Create(48'000.0, 2);
    EXPECT_TRUE(Await([&] { return count() >= 2; }));
  }
  const std::size_t before = count();
  notify::callbackDispatcher.Remove(this);
  ASSERT_EQ(told.size(), before) << "no more when the output has gone";
  EXPECT_EQ(told.back().device, "a clock without sound, 48000 Hz, 256 frames a period");
  EXPECT_EQ(told.back().periodFrames, 256U);
  EXPECT_EQ(told.back().peaks, (std::vector<float>{0.0F, 0.0F}));
  EXPECT_FALSE(told.back().recovering);
}

TEST_F(CreateOutput, TheDefaultIsTheNullDeviceAtTheRateOfTheContent) {
  const tesk_audio::OutputSettings settings = tesk_audio::GetOutputSettings();
  EXPECT_EQ(settings.device, tesk_audio::DeviceKind::Null);
  EXPECT_EQ(settings.rateHz, 0.0);
  EXPECT_EQ(settings.periodFrames, 256U);
  EXPECT_EQ(settings.aheadMs, 15.0);
  EXPECT_EQ(settings.crossfadeMs, 5.0);
  EXPECT_EQ(settings.fadeMs, 3.0);
  const auto output = Create(44100.0, 2);
  EXPECT_NE(dynamic_cast<tesk_audio::LiveSampleOutput*>(output.get()), nullptr);
  EXPECT_EQ(output->GetSampleRateHz(), 44100.0);
}

TEST_F(CreateOutput, OfflineWhenTheSettingsSaySo) {
  tesk_audio::OutputSettings settings;
  settings.device = tesk_audio::DeviceKind::Offline;
  tesk_audio::ConfigureOutput(settings);
  EXPECT_EQ(tesk_audio::GetOutputSettings().device, tesk_audio::DeviceKind::Offline);
  const auto output = Create(96000.0, 6);
  EXPECT_NE(dynamic_cast<tesk_audio::OfflineSampleOutput*>(output.get()), nullptr);
  EXPECT_EQ(output->GetSampleRateHz(), 96000.0);
  EXPECT_EQ(tesk_audio::GetOfflineChannelCount(), 6U);
}

TEST_F(CreateOutput, AContentOfAnotherRateThanTheDevicesIsRefused) {
  for (const auto device : {tesk_audio::DeviceKind::Offline, tesk_audio::DeviceKind::Null}) {
    tesk_audio::OutputSettings settings;
    settings.device = device;
    settings.rateHz = 48000.0;
    tesk_audio::ConfigureOutput(settings);
    EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
        [&] { Create(44100.0, 2); },
        "The audio has 44100 Hz with 2 channels, and the output runs at 48000 Hz with 2 channels. Convert "
        "the audio file, or let the show begin with another rate."));
    EXPECT_EQ(Create(48000.0, 2)->GetSampleRateHz(), 48000.0);
  }
}

}  // namespace
