// Threads that the system refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <utility>
#include <vector>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/host/terminal_program.h"
#include "tests/support/wait_until.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using testing::HasSubstr;

// What tells of a long wait, position updates, deleting, loading the first song and its neighbour, the
// output.
constexpr int kThreadsOfAPlayer = 9;
// Of these, what it cannot be opened without.
constexpr int kThreadsToOpenAPlayer = 4;
// It makes its own frames and ends before another song would be loaded.
constexpr int kThreadsOfARender = 4;
constexpr const char* kLoadedOnceMore =
    "data/2 Polka.obd: Song 2: running straight into it was broken off. It is loaded once "
    "more.\n";

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
  for (const char* song : {"1 Waltz   bar ", "2 Polka   bar ", "3 Galop   bar "}) {
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

// Into a file no less than to a device. What comes late is needed by the output alone, or by nobody.
TEST_P(RefusedThread, ForGoodIsToldInWordsByAPerformance) {
  const std::string out = files_.Beside("out.wav");
  for (const std::vector<std::string>& output :
       {std::vector<std::string>{"null"}, std::vector<std::string>{"file", "--device", out}}) {
    const auto refusing = RefusingThreads(
        {{"ORBEL_REFUSE_THREAD", std::to_string(GetParam())}, {"ORBEL_REFUSE_THREAD_FOR_GOOD", "1"}});
    std::vector<std::string> words{"play", files_.Show(), "--output"};
    words.insert(words.end(), output.begin(), output.end());
    const Ended run = Orbel(words);
    ExpectEndedInWords(run);
    EXPECT_GT(CountRefusals(), 0U);
    EXPECT_THAT(run.messages, testing::Not(HasSubstr("Close other programs. Close other programs")));
    if (GetParam() > kThreadsToOpenAPlayer) continue;
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.messages,
                HasSubstr("orbel: " + files_.Show() + ": the system refuses what playing needs: "));
    EXPECT_THAT(run.messages, testing::EndsWith(". Close other programs and open the show again.\n"));
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_FALSE(std::filesystem::exists(out + ".part"));
  }
}

INSTANTIATE_TEST_SUITE_P(TheNth, RefusedThread, testing::Range(1, kThreadsOfAPlayer + 1));

class RefusedSongs : public RefusedThreads {
 protected:
  RefusedSongs() { files_.AddSong("4", "Reel", 1); }
  static std::string NameOf(const std::string& song) {
    return song + std::array<const char*, 4>{" Waltz", " Polka", " Galop", " Reel"}.at(std::stoul(song) - 1);
  }
  static std::string WhyLeftOut(const std::string& song) {
    return "data/" + NameOf(song) +
           ".obd: the system grants no thread to decode it on; close other programs and open the show again. "
           "Song " +
           song + " is left out.";
  }
  void MakeAttacca(const std::vector<std::string>& songs) const {
    for (const std::string& song : songs) {
      files_.Write("songs/" + NameOf(song) + ".toml", "format = 1\nattacca = true\n");
    }
  }
  // So many songs, every frame of each.
  static std::vector<float> FramesOf(int songs) {
    const std::vector<float> once = host_tests::FramesFromZero(ShowFiles::kRate);
    std::vector<float> frames;
    for (; songs > 0; --songs) frames.insert(frames.end(), once.begin(), once.end());
    return frames;
  }
};

// The first song, one in the middle that is decoded beside the first, one that is reached later, the last.
class RefusedSong : public RefusedSongs, public testing::WithParamInterface<const char*> {};

// Alone, two beside one another at the start, two that are reached later, two apart, all but one.
class SeveralRefusedSongs : public RefusedSongs, public testing::WithParamInterface<const char*> {};

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

TEST_P(SeveralRefusedSongs, AreToldWithTheirNumbersAndFilesAndTheRestPlays) {
  const std::string refused = GetParam();
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", refused}});
  const Ended run = Orbel({"play", files_.Show()});
  ExpectEndedInWords(run);
  EXPECT_GT(CountRefusals(), 0U);
  EXPECT_EQ(run.status, 0) << run.messages;
  for (const char* song : {"1", "2", "3", "4"}) {
    const auto played = HasSubstr(NameOf(song) + "   bar ");
    const auto leftOut = HasSubstr("Song " + std::string(song) + " is left out");
    if (refused.find(song) != std::string::npos) {
      EXPECT_THAT(run.messages, HasSubstr(WhyLeftOut(song)));
      EXPECT_THAT(run.messages, testing::Not(played));
    } else {
      EXPECT_THAT(run.messages, played);
      EXPECT_THAT(run.messages, testing::Not(leftOut));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(OfFour, SeveralRefusedSongs,
                         testing::Values("1", "2", "3", "4", "1,2", "2,3", "3,4", "1,3", "1,2,3", "2,3,4",
                                         "1,2,4"));

TEST_F(RefusedSongs, AllOfThemEndTheShowWithOneMessage) {
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", "1,2,3,4"}});
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages,
            "orbel: " + files_.Show() +
                ": the system refuses what playing needs: Creating file loader thread: 11 EAGAIN: "
                "The system lacked the necessary resources to create another thread. Close other "
                "programs and open the show again.\n");
  EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav")));
}

// The songs beside the one that an attacca runs into are decoded from there on.
TEST_F(RefusedSongs, ThatAnAttaccaComesUponAreLeftOutAndItRunsOn) {
  MakeAttacca({"1", "2"});
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", "3"}});
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  ExpectEndedInWords(run);
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr(kLoadedOnceMore));
  EXPECT_THAT(run.messages, HasSubstr(WhyLeftOut("3")));
  EXPECT_EQ(host_tests::ReadFloatWav(files_.Beside("out.wav")), FramesOf(3));
}

TEST_F(RefusedSongs, OnceAtAnAttaccaIsAskedForAgainAndAllOfThemPlay) {
  MakeAttacca({"1", "2", "3"});
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_THREAD", std::to_string(kThreadsOfARender + 1)}});
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  ExpectEndedInWords(run);
  EXPECT_EQ(CountRefusals(), 1U);
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr(kLoadedOnceMore));
  EXPECT_EQ(host_tests::ReadFloatWav(files_.Beside("out.wav")), FramesOf(4));
}

TEST_F(RefusedSongs, ThatAnAttaccaComesUponLeaveThePerformerToBeginTheNextSong) {
  MakeAttacca({"1"});
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", "3"}});
  host_tests::OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("Song 2: running straight into it was broken off"));
  EXPECT_TRUE(orbel.Shows("2 Polka   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.ShowsLike("2 Polka   bar (?!1\\.1 )\\S+   240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

// Every read takes longer than the wait that a person notices, and several players are built in vain.
TEST_F(RefusedSongs, ThatAreWaitedForAreNamedOnceBeforeTheRefusalIs) {
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", "3"}, {"ORBEL_SLOW_READ", "260000"}});
  host_tests::OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  const std::size_t opened = orbel.GetScreen().size();
  orbel.Type("n");
  EXPECT_TRUE(orbel.Shows("song 1 is still loading: waiting for it"));
  EXPECT_TRUE(orbel.Shows("Song 3 is left out"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  const std::string said = "song 1 is still loading";
  const std::string& screen = orbel.GetScreen();
  EXPECT_EQ(screen.find(said, opened), screen.rfind(said)) << screen;
}

// The thread of the third song is refused once, when the second one is run into. That one is held in the
// middle of its file, which has gone when a fresh player looks for it.
class RefusedSongsBesideMissingOnes : public RefusedSongs {
 protected:
  Ended RenderWithout(const std::vector<std::string>& songs) {
    MakeAttacca({"1", "2", "3"});
    const std::string gate = files_.Beside("gate");
    const std::string held = files_.Beside("held");
    const auto refusing = RefusingThreads({{"ORBEL_REFUSE_THREAD", std::to_string(kThreadsOfARender + 1)},
                                           {"ORBEL_HOLD_READ", "2 Polka.obd:20000"},
                                           {"ORBEL_HOLD_UNTIL", gate},
                                           {"ORBEL_COUNT_HELD", held}});
    host_tests::RunningOrbel running({"render", files_.Show(), "-o", files_.Beside("out.wav")});
    const auto await = [](const std::function<bool()>& condition) {
      EXPECT_TRUE(test_support::WaitUntil(condition, std::chrono::minutes(1)));
    };
    await([&] { return !host_tests::ReadText(held).empty(); });
    for (const std::string& song : songs) std::filesystem::remove(files_.At("data/" + NameOf(song) + ".obd"));
    await([&] { return CountRefusals() > 0; });
    std::ofstream(gate) << "go";
    return running.WaitForEnd();
  }
  static constexpr const char* kPolkaHasGone =
      "data/2 Polka.obd: the file is not there any more; put it back and open the show again. Song 2 is left "
      "out.";
};

TEST_F(RefusedSongsBesideMissingOnes, LeaveTheMissingOneOutAndTheOthersPlay) {
  const Ended run = RenderWithout({"2"});
  ExpectEndedInWords(run);
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr(kLoadedOnceMore));
  EXPECT_THAT(run.messages, HasSubstr(kPolkaHasGone));
  EXPECT_EQ(host_tests::ReadFloatWav(files_.Beside("out.wav")), FramesOf(3));
}

TEST_F(RefusedSongsBesideMissingOnes, EndTheShowWhenNothingIsLeftBehindThem) {
  const Ended run = RenderWithout({"2", "3", "4"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, testing::EndsWith("orbel: " + files_.Show() + ": the show cannot go on: " +
                                              std::string(kPolkaHasGone) + "\n"));
  EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav")));
  EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav.part")));
}

// The player that is to be made anew needs threads as well.
TEST_F(RefusedSongs, ForGoodFromAnAttaccaOnEndTheShowInWords) {
  MakeAttacca({"1", "2", "3"});
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_THREAD", std::to_string(kThreadsOfARender + 1)},
                                         {"ORBEL_REFUSE_THREAD_FOR_GOOD", "1"}});
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  ExpectEndedInWords(run);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages,
              HasSubstr("orbel: " + files_.Show() + ": the system refuses what playing needs: "));
  EXPECT_THAT(run.messages, HasSubstr("Close other programs and open the show again.\n"));
  EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav")));
  EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav.part")));
}

// A fresh player goes on in the same file.
TEST_F(RefusedSongs, ThatAreReachedWhilePlayingIntoAFileLeaveTheOthersInIt) {
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_LOADER", "3"}});
  const std::string out = files_.Beside("out.wav");
  const Ended run = Orbel({"play", files_.Show(), "--output", "file", "--device", out, "--fade", "0"});
  ExpectEndedInWords(run);
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr(WhyLeftOut("3")));
  std::vector<float> heard = host_tests::ReadFloatWav(out);
  std::erase(heard, 0.0F);
  EXPECT_TRUE(heard == FramesOf(3)) << heard.size();
}

// The output keeps its meters whether or not there is a thread that tells of them.
TEST_F(RefusedThreads, OfTheMeterLeavesThePeaksRight) {
  const auto refusing = RefusingThreads({{"ORBEL_REFUSE_BODY", "MeterNews"}});
  const Ended run = Orbel({"play", files_.Show(), "--output", "null"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_GT(CountRefusals(), 0U);
  EXPECT_THAT(run.messages, HasSubstr("The meter of the audio output cannot start its thread"));
  const std::size_t second = run.messages.find("2 Polka   bar");
  ASSERT_NE(second, std::string::npos) << run.messages;
  // Of what has sounded since the look before, which can be nothing on a busy machine now and then.
  EXPECT_THAT(run.messages.substr(second), testing::ContainsRegex("  peak -[1-8][0-9] dB"));
}

}  // namespace
}  // namespace faults
