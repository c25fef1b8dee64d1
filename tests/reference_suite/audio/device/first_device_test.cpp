#include "reference_suite/audio/device/first_device.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <thread>

#include "reference_suite/audio/device/null_device.h"
#include "suite/audio/errors.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_audio::Device;
using tesk_audio::TESKAudioError;

// Told apart by their channels.
struct System {
  explicit System(unsigned number) : channels(number) {}
  tesk_audio::DeviceSource Source() {
    return [this]() -> std::unique_ptr<Device> {
      ++asked;
      if (hangs.valid()) hangs.wait();
      if (!answers) throw TESKAudioError("No " + std::to_string(channels) + ".");
      return std::make_unique<tesk_audio::NullDevice>(48'000.0, channels, 256);
    };
  }
  const unsigned channels;
  std::atomic<bool> answers{false};
  std::atomic<int> asked{0};
  std::shared_future<void> hangs;
};

class FirstDevice : public testing::Test {
 protected:
  System jack_{1};
  System desktop_{2};
  const tesk_audio::DeviceSource source_ = tesk_audio::FirstDeviceOf(jack_.Source(), desktop_.Source());
};

TEST_F(FirstDevice, IsTheFirstThatAnswersAndBothSayWhyNoneDoes) {
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>([&] { source_(); }, "No 1. No 2."));
  jack_.answers = desktop_.answers = true;
  EXPECT_EQ(source_()->GetChannelCount(), 1U);
  EXPECT_EQ(desktop_.asked, 1);
}

TEST_F(FirstDevice, OnceOneWasFoundTheOtherIsAskedNoMore) {
  desktop_.answers = true;
  EXPECT_EQ(source_()->GetChannelCount(), 2U);
  jack_.answers = true;
  EXPECT_EQ(source_()->GetChannelCount(), 2U);
  desktop_.answers = false;
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>([&] { source_(); }, "No 2."));
  EXPECT_EQ(jack_.asked, 1);

  System other(1);
  other.answers = true;
  const tesk_audio::DeviceSource reversed = tesk_audio::FirstDeviceOf(other.Source(), jack_.Source());
  reversed();
  other.answers = false;
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>([&] { reversed(); }, "No 1."));
}

TEST_F(FirstDevice, WhileTheFirstHangsTheSecondAnswersAndIsTheOneFromThenOn) {
  std::promise<void> hang;
  jack_.hangs = hang.get_future().share();
  jack_.answers = true;
  unsigned late = 0;
  std::thread hanging([&] { late = source_()->GetChannelCount(); });
  while (jack_.asked == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::ThrowsWithText<TESKAudioError>([&] { source_(); }, "No 2."));
  desktop_.answers = true;
  EXPECT_EQ(source_()->GetChannelCount(), 2U);
  EXPECT_EQ(jack_.asked, 1);
  hang.set_value();
  hanging.join();
  EXPECT_EQ(late, 1U) << "whoever waits for it gets it";
  EXPECT_EQ(source_()->GetChannelCount(), 2U);
}

}  // namespace
