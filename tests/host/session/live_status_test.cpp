// What a performance shows, looked at far more often than it is drawn.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "host/session/live.h"
#include "suite/core/callback_dispatcher.h"
#include "suite/core/device_update.h"
#include "suite/core/meters_update.h"
#include "suite/core/notification_names.h"
#include "tests/host/show_files.h"
#include "tests/support/wait_until.h"

namespace orbel::host {
namespace {

class LiveStatus : public testing::Test {
 protected:
  explicit LiveStatus(const std::string& cues = "") { files_.AddSong("1", "Waltz", 3, cues); }

  Live Open() const {
    PlayOptions options;
    options.showPath = files_.Show();
    options.output = "null";
    options.sound.aheadMs = 150;
    return Live(options, true);
  }

  // Plays until it stands as `state` says; false when it never does.
  template <typename Look>
  bool PlayUntil(Live& live, const std::string& state, const Look& look) const {
    live.Start();
    live.Do({CommandKind::Play, 0.0, ""});
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < deadline) {
      for (int i = 0; i < 50; ++i) look(live.GetStatus());
      live.Poll(0.0);
      if (live.GetStatus().state == state) return true;
    }
    return false;
  }

  host_tests::ShowFiles files_;
};

class LiveStatusOfACaesura : public LiveStatus {
 protected:
  LiveStatusOfACaesura() : LiveStatus("[[caesura]]\nat = \"3.1\"\n") {}
};

TEST_F(LiveStatusOfACaesura, AlwaysTellsTheSamePlaceOfIt) {
  Live live = Open();
  std::set<std::string> next;
  EXPECT_TRUE(
      PlayUntil(live, "waiting at a caesura", [&](const StageStatus& status) { next.insert(status.next); }));
  next.erase("4.1 end");
  EXPECT_EQ(next, std::set<std::string>{"3.1 caesura"});
}

TEST_F(LiveStatusOfACaesura, IsStoppedAtTheStartWhereverItIsStopped) {
  Live live = Open();
  const auto stops = [&] {
    live.Do({CommandKind::Stop, 0.0, ""});
    EXPECT_FALSE(live.IsUnderWay());
    EXPECT_EQ(live.GetStatus().position, "1.1");
    return live.GetStatus().state;
  };
  EXPECT_TRUE(PlayUntil(live, "waiting at a caesura", [](const StageStatus&) {}));
  EXPECT_EQ(stops(), "stopped");
  EXPECT_TRUE(PlayUntil(live, "playing", [](const StageStatus&) {}));
  EXPECT_EQ(stops(), "stopped");
  EXPECT_TRUE(PlayUntil(live, "playing", [](const StageStatus&) {}));
  live.Do({CommandKind::Pause, 0.0, ""});
  EXPECT_EQ(live.GetStatus().state, "paused");
  EXPECT_EQ(stops(), "stopped");
  EXPECT_TRUE(PlayUntil(live, "waiting at a caesura", [](const StageStatus&) {})) << "it begins anew";
}

TEST_F(LiveStatus, ATempoIsToldInHundredths) {
  Live live = Open();
  std::vector<std::string> told;
  for (int i = 0; i < 13; ++i) told = live.Do({CommandKind::Faster, 0.0, ""});
  EXPECT_EQ(told, std::vector<std::string>{"tempo 1.13"});
  for (int i = 0; i < 26; ++i) told = live.Do({CommandKind::Slower, 0.0, ""});
  EXPECT_EQ(told, std::vector<std::string>{"tempo 0.87"});
}

// The meters come ten times a second, and what was told last may be of the clock in the device's place.
TEST_F(LiveStatus, WhereADeviceHasComeTheMetersAreItsOwn) {
  Live live = Open();
  live.Start();
  live.Poll(0.0);
  notify::MetersUpdate meters;
  meters.xruns = 77;
  notify::callbackDispatcher.Notify(notify::names::audio_meters, &meters);
  notify::DeviceUpdate device{.recovering = false, .device = "another", .reason = ""};
  notify::callbackDispatcher.Notify(notify::names::audio_device_changed, &device);
  live.Poll(0.0);
  EXPECT_EQ(live.GetStatus().sound.find("xruns 77"), std::string::npos) << live.GetStatus().sound;
  EXPECT_NE(live.GetStatus().sound.find("xruns 0"), std::string::npos) << live.GetStatus().sound;
}

TEST_F(LiveStatus, NeverFallsBackWhereASongEnds) {
  Live live = Open();
  std::string place;
  EXPECT_TRUE(PlayUntil(live, "ended", [&](const StageStatus& status) {
    EXPECT_GE(status.position, place);
    place = status.position;
  }));
  EXPECT_EQ(place, "4.1");
}

}  // namespace
}  // namespace orbel::host
