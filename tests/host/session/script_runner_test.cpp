#include "host/session/script_runner.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orbel::host {
namespace {

// Positions are plain ticks here; a song has those up to its length.
ScriptRunner RunnerOf(const std::string& text) {
  std::istringstream in(text);
  return ScriptRunner(ReadScript(in, "script"));
}

ScriptRunner::FindTick SongOfLength(TickIndex length) {
  return [length](const std::string& position) -> std::optional<TickIndex> {
    const TickIndex tick = static_cast<TickIndex>(std::stoul(position));
    return tick <= length ? std::optional(tick) : std::nullopt;
  };
}

std::string Due(ScriptRunner& runner) {
  std::string due;
  for (const ScriptLine& line : runner.TakeDue()) due += (due.empty() ? "" : ", ") + ToString(line.command);
  return due;
}

TEST(ScriptRunner, APositionIsReachedByArrivingOrByPassing) {
  ScriptRunner runner = RunnerOf("at 100 go\nat 150 again");
  runner.OnSong(SongOfLength(1000), 0);
  runner.PlayTo(99);
  EXPECT_EQ(Due(runner), "");
  runner.PlayTo(100);
  EXPECT_EQ(Due(runner), "go");
  runner.PlayTo(170);
  EXPECT_EQ(Due(runner), "again");
  runner.PlayTo(200);
  EXPECT_EQ(Due(runner), "");
}

TEST(ScriptRunner, APositionIsReachedByLandingOnItOrJumpingOverIt) {
  ScriptRunner runner = RunnerOf("at 500 go\nat 450 again\nat 600 stop");
  runner.OnSong(SongOfLength(1000), 0);
  runner.PlayTo(100);
  runner.Land(500);
  EXPECT_EQ(Due(runner), "go, again");
}

TEST(ScriptRunner, LandingBehindAPositionDoesNotReachIt) {
  ScriptRunner runner = RunnerOf("at 300 pass 2 go");
  runner.OnSong(SongOfLength(1000), 0);
  runner.PlayTo(400);
  runner.Land(350);
  runner.PlayTo(400);
  EXPECT_EQ(Due(runner), "");
  runner.Land(299);
  runner.PlayTo(300);
  EXPECT_EQ(Due(runner), "go");
}

TEST(ScriptRunner, PassesAreCountedByArrivals) {
  ScriptRunner runner = RunnerOf("at 100 pass 3 go");
  runner.OnSong(SongOfLength(1000), 0);
  for (int pass = 1; pass <= 4; ++pass) {
    runner.PlayTo(200);
    EXPECT_EQ(Due(runner), pass == 3 ? "go" : "") << "pass " << pass;
    runner.Land(50);
  }
}

TEST(ScriptRunner, LandingExactlyOnAPositionCountsAsAPassOfItsOwn) {
  ScriptRunner runner = RunnerOf("at 100 pass 2 go");
  runner.OnSong(SongOfLength(1000), 0);
  runner.PlayTo(200);
  runner.Land(100);
  EXPECT_EQ(Due(runner), "go");
  runner.PlayTo(200);
  EXPECT_EQ(Due(runner), "");
}

TEST(ScriptRunner, TheStartOfASongIsReachedWhenItBecomesCurrent) {
  ScriptRunner runner = RunnerOf("at 0 go\nat 0 pass 2 again");
  runner.OnSong(SongOfLength(1000), 0);
  EXPECT_EQ(Due(runner), "go");
  runner.PlayTo(1000);
  runner.OnSong(SongOfLength(1000), 0);
  EXPECT_EQ(Due(runner), "again");
}

TEST(ScriptRunner, ALineWaitsForTheSongThatHasItsPosition) {
  ScriptRunner runner = RunnerOf("at 800 go");
  runner.OnSong(SongOfLength(500), 0);
  runner.PlayTo(500);
  EXPECT_FALSE(runner.CanActWithin(0, 500));
  runner.OnSong(SongOfLength(1000), 0);
  EXPECT_TRUE(runner.CanActWithin(0, 1000));
  runner.PlayTo(900);
  EXPECT_EQ(Due(runner), "go");
}

TEST(ScriptRunner, DueLinesComeInTheOrderOfTheFile) {
  ScriptRunner runner = RunnerOf("time 1 pause\nat 50 go\nat 20 again");
  runner.OnSong(SongOfLength(1000), 0);
  runner.PlayTo(100);
  runner.SetTime(1.0);
  EXPECT_EQ(Due(runner), "pause, go, again");
}

TEST(ScriptRunner, TimeIsReachedExactlyAndOnce) {
  ScriptRunner runner = RunnerOf("time 12.5 stop\ntime 20 go");
  EXPECT_EQ(runner.NextTime(), 12.5);
  runner.SetTime(12.499);
  EXPECT_EQ(Due(runner), "");
  runner.SetTime(12.5);
  EXPECT_EQ(Due(runner), "stop");
  EXPECT_EQ(runner.NextTime(), 20.0);
  runner.SetTime(13.0);
  EXPECT_EQ(Due(runner), "");
  runner.SetTime(21.0);
  EXPECT_EQ(Due(runner), "go");
  EXPECT_EQ(runner.NextTime(), std::nullopt);
}

TEST(ScriptRunner, EachStandTakesOneWaitingLine) {
  ScriptRunner runner = RunnerOf("waiting go\nwaiting play");
  EXPECT_TRUE(runner.HasWaiting());
  EXPECT_EQ(ToString(runner.TakeWaiting()->command), "go");
  EXPECT_EQ(ToString(runner.TakeWaiting()->command), "play");
  EXPECT_FALSE(runner.HasWaiting());
  EXPECT_FALSE(runner.TakeWaiting().has_value());
}

TEST(ScriptRunner, KnowsWhetherALoopCanStillBeActedOn) {
  ScriptRunner runner = RunnerOf("at 150 pass 2 go\nwaiting go");
  runner.OnSong(SongOfLength(1000), 0);
  EXPECT_TRUE(runner.CanActWithin(100, 200));
  EXPECT_TRUE(runner.CanActWithin(150, 150));
  EXPECT_FALSE(runner.CanActWithin(151, 200));
  runner.PlayTo(200);
  EXPECT_TRUE(runner.CanActWithin(100, 200));
  runner.Land(100);
  runner.PlayTo(200);
  EXPECT_EQ(Due(runner), "go");
  EXPECT_FALSE(runner.CanActWithin(100, 200));
}

TEST(ScriptRunner, ATimeStillToComeCanActAnywhere) {
  ScriptRunner runner = RunnerOf("time 3 go");
  EXPECT_TRUE(runner.CanActWithin(0, 10));
  runner.SetTime(3.0);
  EXPECT_TRUE(runner.CanActWithin(0, 10)) << "due, not yet taken";
  runner.TakeDue();
  EXPECT_FALSE(runner.CanActWithin(0, 10));
}

}  // namespace
}  // namespace orbel::host
