#include "reference_suite/audio/device/device_watch.h"

#include <gtest/gtest.h>

namespace {

using tesk_audio::DeviceWatch;
using Verdict = DeviceWatch::Verdict;

// A device at 48 000 frames a second that is looked at every 10 ms.
struct Watched {
  Verdict Look(double seconds = 0.01) {
    look.seconds += seconds;
    return watch.Judge(look);
  }
  // It has called, and asked for that many frames.
  void Call(long long frames) {
    ++look.lastCall;
    look.framesAsked += frames;
  }
  // Seconds until the verdict is another one than Fine; the device calls as `pace` says.
  double SecondsUntil(Verdict verdict, double pace) {
    const double start = look.seconds;
    for (int i = 0; i < 1'000; ++i) {
      if (pace > 0.0) Call(static_cast<long long>(480.0 * pace));
      const Verdict judged = Look();
      if (judged == verdict) return look.seconds - start;
      if (judged != Verdict::Fine) return -1.0;
    }
    return -2.0;
  }

  DeviceWatch watch;
  DeviceWatch::Look look{0.0, 0, 0, 256, 48'000.0, 0.5, false};
};

TEST(DeviceWatch, ADeviceThatKeepsTimeIsFine) {
  Watched watched;
  EXPECT_EQ(watched.SecondsUntil(Verdict::Silent, 1.0), -2.0);
}

TEST(DeviceWatch, SilentForHalfASecondIsDead) {
  Watched watched;
  for (int i = 0; i < 10; ++i) {
    watched.Call(480);
    ASSERT_EQ(watched.Look(), Verdict::Fine);
  }
  EXPECT_NEAR(watched.SecondsUntil(Verdict::Silent, 0.0), 0.5, 0.011);
}

TEST(DeviceWatch, ALongPeriodHasEightOfThem) {
  Watched watched;
  watched.look.periodFrames = 4'800;
  watched.Look();
  EXPECT_NEAR(watched.SecondsUntil(Verdict::Silent, 0.0), 0.8, 0.011);
}

TEST(DeviceWatch, OneThatHasNeverCalledIsDeadAsWell) {
  Watched watched;
  EXPECT_NEAR(watched.SecondsUntil(Verdict::Silent, 0.0), 0.5, 0.021);
}

TEST(DeviceWatch, AMachineThatWasAsleepSuspectsNobody) {
  Watched watched;
  watched.Look();
  for (int i = 0; i < 9; ++i) ASSERT_EQ(watched.Look(3'600.0), Verdict::Fine);
  watched.Call(256);
  EXPECT_EQ(watched.Look(), Verdict::Fine);
}

TEST(DeviceWatch, MoreThanTwiceTheRateIsDead) {
  Watched slow;
  EXPECT_EQ(slow.SecondsUntil(Verdict::TooFast, 1.9), -2.0);
  Watched fast;
  const double seconds = fast.SecondsUntil(Verdict::TooFast, 3.0);
  EXPECT_GT(seconds, 0.0);
  EXPECT_LE(seconds, 1.0);
  Watched wild;
  EXPECT_NEAR(wild.SecondsUntil(Verdict::TooFast, 1'000.0), 0.01, 0.011) << "at once";
}

TEST(DeviceWatch, WithoutAClockThePaceTellsNothing) {
  Watched watched;
  watched.look.freewheels = true;
  EXPECT_EQ(watched.SecondsUntil(Verdict::TooFast, 100.0), -2.0);
  watched.look.freewheels = false;
  EXPECT_EQ(watched.Look(), Verdict::Fine) << "what was taken before does not count";
}

}  // namespace
