// Players that live short and hard lives: loaders, render thread, update generator, deleter and a host that
// never rests meet in every order. What is asked for: no hang, no report of a sanitizer, no broken invariant,
// no lock order beyond the table, and that a song which is loaded afterwards plays from start to end.
#include <gtest/gtest.h>

#include <cstdlib>

#include "reference_suite/audio/output/output_settings.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/stress/disk_calls.h"
#include "tests/stress/noise.h"
#include "tests/stress/stress_life.h"
#include "tests/support/segment_settings.h"

namespace stress {
namespace {

// ORBEL_STRESS_COMMANDS: how many commands in all; the ordinary run has 4,000.
int CommandsInAll() {
  const char* const wish = std::getenv("ORBEL_STRESS_COMMANDS");
  return wish == nullptr ? 4000 : std::atoi(wish);
}

// As songs of minutes are, on a machine with cores to spare.
void DecodeOnSeveralThreads() {
  test_support::decodingSettings.shortestSegmentSeconds = 4.0;
  test_support::decodingSettings.cores = 6;
}

// Without this the stress would leave out what every song of an evening takes.
TEST(StressShow, HasSongsThatAreDecodedOnSeveralThreads) {
  DecodeOnSeveralThreads();
  StressShow show;
  show.Restore();
  for (const unsigned song : StressShow::kLongRecordings) {
    for (const bool byOgg : {false, true}) {
      show.Replace(song, byOgg);
      disk::TakeReaders();
      Decode(show.RecordingOf(song));
      EXPECT_EQ(disk::TakeReaders(), song == 3 ? 3U : 4U) << "the loader's, and one for each segment";
    }
  }
}

class PlayerStress : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    tesk_audio::OutputSettings settings;
    settings.periodFrames = 64;
    settings.aheadMs = 8.0;
    settings.fadeMs = 0.5;
    tesk_audio::ConfigureOutput(settings);
    DecodeOnSeveralThreads();
  }
};

std::string Text(const std::map<std::string, int>& lines) {
  std::string text;
  for (const auto& [line, count] : lines) text += "  " + std::to_string(count) + " x " + line + "\n";
  return text;
}

// What the log may hold: files that are destroyed give recordings of another format, which the loader that
// finds one reports.
bool IsExpected(const std::string& line, bool destroysFiles) {
  return destroysFiles && line.find("the output runs at") != std::string::npos;
}

TEST_P(PlayerStress, NothingHangsAndNoInvariantBreaks) {
  const bool destroysFiles = GetParam();
  Watchdog watchdog(std::chrono::seconds(60));
  Noise noise;
  StressShow show;
  int commands = 0;
  int opened = 0;
  unsigned lives = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::hours(1);
  while (commands < CommandsInAll() / 2 && !HasFailure() && std::chrono::steady_clock::now() < end) {
    LifePlan plan;
    plan.seed = ++lives;
    plan.commands = static_cast<int>((plan.seed * 2654435761U) % 200);
    plan.destroysFiles = destroysFiles;
    const LifeResult life = LiveOneLife(&show, plan, &watchdog);
    commands += life.commands;
    opened += life.opened ? 1 : 0;
    if (HasFailure()) ADD_FAILURE() << "in life " << lives << " after " << life.commands << " commands";
  }
  if (destroysFiles && !HasFailure()) {
    LifePlan last;
    last.seed = ++lives;
    EXPECT_TRUE(LiveOneLife(&show, last, &watchdog).opened) << "with its files back the show plays";
  }
  for (const auto& [line, count] : noise.Logged()) {
    if (!IsExpected(line, destroysFiles)) ADD_FAILURE() << count << " x logged: " << line;
  }
  EXPECT_GE(commands, CommandsInAll() / 2);
  EXPECT_GE(opened, static_cast<int>(destroysFiles ? lives / 2 : lives));
  RecordProperty("lives", static_cast<int>(lives));
  RecordProperty("commands", commands);
  std::fprintf(stderr, "%u lives, %d opened, %d commands\nconsole:\n%slog:\n%s", lives, opened, commands,
               Text(noise.Written()).c_str(), Text(noise.Logged()).c_str());
}

INSTANTIATE_TEST_SUITE_P(Files, PlayerStress, testing::Values(false, true),
                         [](const auto& which) { return which.param ? "AreDestroyed" : "AreReplaced"; });

}  // namespace
}  // namespace stress
