// Threads that the system refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <utility>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using testing::HasSubstr;

// What tells of a long wait, position updates, deleting, loading the first song and its neighbour, the
// output.
constexpr int kThreadsOfAPlayer = 9;
// It makes its own frames and ends before another song would be loaded.
constexpr int kThreadsOfARender = 4;

class RefusedThreads : public testing::Test {
 protected:
  RefusedThreads() {
    files_.AddSong("1", "Waltz", 1);
    files_.AddSong("2", "Polka", 1);
    files_.AddSong("3", "Galop", 1);
  }
  Environment RefusingThreads(Environment::Variables variables) {
    variables.emplace_back("ORBEL_COUNT_REFUSALS", files_.Beside("refusals"));
    return Refusing(std::move(variables));
  }
  std::size_t CountRefusals() const { return host_tests::ReadText(files_.Beside("refusals")).size(); }

  ShowFiles files_;
};

class RefusedThread : public RefusedThreads, public testing::WithParamInterface<int> {};

TEST_P(RefusedThread, OnceIsAskedForAgainAndTheShowPlays) {
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_THREAD", std::to_string(GetParam())}});
  const Ended run = Orbel({"play", files_.Show()});
  ExpectEndedInWords(run);
  EXPECT_EQ(CountRefusals(), 1U);
  EXPECT_EQ(run.status, 0) << run.messages;
  for (const char* song : {"1 Waltz   bar 1.1", "2 Polka   bar 1.1", "3 Galop   bar 1.1"}) {
    EXPECT_THAT(run.messages, HasSubstr(song));
  }
}

TEST_P(RefusedThread, ForGoodIsToldInWords) {
  const auto refusing = RefusingThreads(
      {{"ORBEL_REFUSE_THREAD", std::to_string(GetParam())}, {"ORBEL_REFUSE_THREAD_FOR_GOOD", "1"}});
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  ExpectEndedInWords(run);
  if (GetParam() > kThreadsOfARender) {
    EXPECT_EQ(CountRefusals(), 0U);
    EXPECT_EQ(run.status, 0) << run.messages;
    return;
  }
  EXPECT_GT(CountRefusals(), 1U);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("Close other programs"));
  EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav")));
}

INSTANTIATE_TEST_SUITE_P(TheNth, RefusedThread, testing::Range(1, kThreadsOfAPlayer + 1));

// The first song, one in the middle that is decoded beside the first, one that is reached later, the last.
class RefusedSong : public RefusedThreads, public testing::WithParamInterface<const char*> {
 protected:
  RefusedSong() { files_.AddSong("4", "Reel", 1); }
  static std::string NameOf(const std::string& song) {
    return song + std::array<const char*, 4>{" Waltz", " Polka", " Galop", " Reel"}.at(std::stoul(song) - 1);
  }
  static std::string WhyLeftOut(const std::string& song) {
    return "data/" + NameOf(song) +
           ".obd: the system grants no thread to decode it on; close other programs and open the show again. "
           "Song " +
           song + " is left out.";
  }
};

TEST_P(RefusedSong, IsToldWithItsNumberAndFileAndTheRestPlays) {
  const std::string refused = GetParam();
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", refused}});
  const Ended run = Orbel({"play", files_.Show()});
  ExpectEndedInWords(run);
  EXPECT_GT(CountRefusals(), 0U);
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr(WhyLeftOut(refused)));
  for (const char* song : {"1", "2", "3", "4"}) {
    const auto played = HasSubstr(NameOf(song) + "   bar 1.1");
    const auto leftOut = HasSubstr("Song " + std::string(song) + " is left out");
    if (song == refused) {
      EXPECT_THAT(run.messages, testing::Not(played));
    } else {
      EXPECT_THAT(run.messages, played);
      EXPECT_THAT(run.messages, testing::Not(leftOut));
    }
  }
}

TEST_P(RefusedSong, AskedForByItsNumberEndsInWords) {
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", GetParam()}});
  const Ended run = Orbel({"render", files_.Show(), "--song", GetParam(), "-o", files_.Beside("out.wav")});
  ExpectEndedInWords(run);
  EXPECT_GT(CountRefusals(), 0U);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr(WhyLeftOut(GetParam())));
  EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav")));
}

INSTANTIATE_TEST_SUITE_P(Alone, RefusedSong, testing::Values("1", "2", "3", "4"));

}  // namespace
}  // namespace faults
