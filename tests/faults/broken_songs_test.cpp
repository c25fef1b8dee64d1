// Songs that are found broken when they are decoded: said with file and cause, and the others play.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/host/terminal_program.h"
#include "tests/support/wait_until.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::FramesFromZero;
using host_tests::Orbel;
using host_tests::OrbelInATerminal;
using host_tests::ReadFloatWav;
using host_tests::ReadText;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;
using host_tests::WriteWav;
using testing::HasSubstr;
using testing::Not;

constexpr int kBars = 8;
constexpr long long kFrames = 1LL * kBars * ShowFiles::kRate;

class BrokenSongs : public testing::Test {
 protected:
  void AddSongs(const std::vector<std::string>& names) {
    for (const std::string& name : names) files_.AddSong(std::to_string(++count_), name, kBars);
  }
  // Behind the first tenth of a megabyte, which is more than what is read of a file to look at it.
  static Environment BreakingReadOf(const std::string& song) {
    return Refusing({{"ORBEL_REFUSE_READ", song + ":100000"}});
  }
  // When the file `gate` has something in it, and not before.
  static Environment BreakingReadBehind(const std::string& gate, const std::string& song) {
    return Refusing({{"ORBEL_REFUSE_READ", song + ":100000"},
                     {"ORBEL_HOLD_READ", song + ":100000"},
                     {"ORBEL_HOLD_UNTIL", gate}});
  }
  std::string Out() const { return files_.Beside("out.wav"); }
  Ended PlayIntoFile() const {
    return Orbel({"play", files_.Show(), "--output", "file", "--device", Out(), "--fade", "0"});
  }
  std::vector<float> Heard() const {
    std::vector<float> frames = ReadFloatWav(Out());
    std::erase(frames, 0.0F);
    return frames;
  }
  static std::vector<float> Songs(int songs) {
    std::vector<float> frames;
    for (const std::vector<float> once = FramesFromZero(kFrames); songs > 0; --songs)
      frames.insert(frames.end(), once.begin(), once.end());
    return frames;
  }

  ShowFiles files_;
  int count_ = 0;
};

int Count(const std::string& text, const std::string& words) {
  int count = 0;
  for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) ++count;
  return count;
}

TEST_F(BrokenSongs, TheOnlySongOfAShowIsToldWithFileAndCause) {
  AddSongs({"Waltz"});
  const auto breaking = BreakingReadOf("1 Waltz.obd");
  for (const auto& arguments : {std::vector<std::string>{"render", files_.Show(), "-o", Out()},
                                std::vector<std::string>{"play", files_.Show(), "--output", "null"}}) {
    const Ended run = Orbel(arguments);
    ExpectEndedInWords(run);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.messages, HasSubstr("no song can be played:\n       data/1 Waltz.obd: "));
    EXPECT_THAT(run.messages, HasSubstr("Input/output error"));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
}

TEST_F(BrokenSongs, TheFormatOfTheShowComesFromASongThatCanBePlayed) {
  AddSongs({"Waltz", "Polka"});
  WriteWav(files_.At("data/1 Waltz.obd"), FramesFromZero(2 * kFrames), ShowFiles::kRate, 2);
  const auto breaking = BreakingReadOf("1 Waltz.obd");
  const Ended run = PlayIntoFile();
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Song 1 is left out."));
  EXPECT_THAT(run.messages, Not(HasSubstr("Song 2 is left out.")));
  EXPECT_TRUE(Heard() == Songs(1));
}

// Found when others were played already.
TEST_F(BrokenSongs, AreMissingFromTheFileThatIsPlayedIntoAndNothingElseIs) {
  AddSongs({"Waltz", "Polka", "Galop", "March"});
  const auto breaking = BreakingReadOf("3 Galop.obd");
  const Ended run = PlayIntoFile();
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Song 3 is left out."));
  const std::vector<float> heard = Heard();
  EXPECT_EQ(heard.size(), Songs(3).size());
  EXPECT_TRUE(heard == Songs(3));
  EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
}

TEST_F(BrokenSongs, AtTheEndOfTheShowEndIt) {
  AddSongs({"Waltz", "Polka", "Galop"});
  const auto breaking = BreakingReadOf("3 Galop.obd");
  const Ended run = PlayIntoFile();
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Song 3 is left out."));
  EXPECT_TRUE(Heard() == Songs(2)) << "nothing is played again: " << Heard().size() << " frames\n"
                                   << run.messages;
}

TEST_F(BrokenSongs, InARowAreLeftOutToo) {
  AddSongs({"Waltz", "Galop", "Polka A", "Polka B", "Polka C", "March"});
  const auto breaking = BreakingReadOf("Polka");
  const Ended run = PlayIntoFile();
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_TRUE(Heard() == Songs(3));
  EXPECT_EQ(Count(run.messages, "is left out."), 3);
}

// Whether the other songs of a show are sound is no question while the next one is waited for.
TEST_F(BrokenSongs, KeepNobodyWaitingForSongsThatAreNotNeeded) {
  AddSongs({"Waltz", "Polka", "Galop", "March", "Reel", "Jig", "Hornpipe"});
  std::ofstream(files_.Beside("script")) << "time 0.2 next\nat 1.3 stop\n";
  const Environment circumstances = Refusing({{"ORBEL_REFUSE_READ", "2 Polka.obd:100000"},
                                              {"ORBEL_HOLD_READ", "Hornpipe.obd:100000"},
                                              {"ORBEL_HOLD_UNTIL", files_.Beside("never")},
                                              {"ORBEL_COUNT_HELD", files_.Beside("held")}});
  const Ended run = Orbel({"play", files_.Show(), "--output", "null", "--script", files_.Beside("script")});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("3 Galop   bar "));
  EXPECT_EQ(ReadText(files_.Beside("held")), "") << "the last song was decoded";
}

TEST_F(BrokenSongs, AreLeftOutWhereAnAttaccaWouldRunIntoThemAndNamedOnce) {
  files_.AddSong("1", "Waltz", 1, "attacca = true\n");
  count_ = 1;
  AddSongs({"Polka", "Galop"});
  const std::string gate = files_.Beside("gate");
  const Environment circumstances = BreakingReadBehind(gate, "2 Polka.obd");
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("song 2 is still loading: waiting for it"));
  std::ofstream(gate) << "fail";
  EXPECT_TRUE(orbel.Shows("data/2 Polka.obd: "));
  EXPECT_TRUE(orbel.Shows("Song 2 is left out."));
  EXPECT_TRUE(orbel.Shows("3 Galop   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.ShowsLike("3 Galop   bar (?!1\\.1 )\\S+   240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_EQ(Count(orbel.GetScreen(), "data/2 Polka.obd"), 1);
  EXPECT_EQ(Count(orbel.GetScreen(), "a song could not be loaded"), 0);
}

// Where nobody sits at the keys, into a file and at the pace of a device. The song is found broken when the
// one before it has run into it already, and nothing lies behind it that could be played instead.
TEST_F(BrokenSongs, AtAnAttaccaIntoTheLastSongEndThePerformanceWithAStatusOfFailure) {
  files_.AddSong("1", "Waltz", 1, "attacca = true\n");
  count_ = 1;
  AddSongs({"Polka"});
  for (const std::vector<std::string>& output :
       {std::vector<std::string>{"file", "--device", Out()}, std::vector<std::string>{"null"}}) {
    SCOPED_TRACE(output.front());
    const std::string gate = files_.Beside("gate to " + output.front());
    const Environment circumstances = BreakingReadBehind(gate, "2 Polka.obd");
    std::vector<std::string> words{"play", files_.Show(), "--output"};
    words.insert(words.end(), output.begin(), output.end());
    RunningOrbel running(words);
    EXPECT_TRUE(running.Says("song 2 is still loading: waiting for it"));
    std::ofstream(gate) << "fail";
    const Ended run = running.WaitForEnd();
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.messages,
                testing::EndsWith("orbel: " + files_.Show() +
                                  ": the show cannot go on: data/2 Polka.obd: the file cannot be read: "
                                  "Input/output error. Check the disk and copy the file again. Song 2 is "
                                  "left out.\n"));
    EXPECT_FALSE(std::filesystem::exists(Out()));
    EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
  }
}

bool HasThread(pid_t process, const std::string& name) {
  std::error_code gone;
  for (const auto& task :
       std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task", gone)) {
    if (ReadText((task.path() / "comm").string()) == name + "\n") return true;
  }
  return false;
}

// With `cues`, and `keys` typed while it plays, the first song comes to a stand; the second one fails to load
// then, and a go is to take the first one on from where it stands.
class BrokenSongsBehindAStand : public BrokenSongs {
 protected:
  void ExpectToGoOn(const std::string& cues, const std::string& keys, const std::string& stands) {
    files_.AddSong("1", "Waltz", 60, cues);
    count_ = 1;
    AddSongs({"Polka", "Galop"});
    const std::string gate = files_.Beside("gate");
    const Environment circumstances = BreakingReadBehind(gate, "2 Polka.obd");
    OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
    ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
    orbel.Type(" ");
    if (!keys.empty()) {
      ASSERT_TRUE(orbel.ShowsLike("1 Waltz   bar (?!1\\.1 )\\S+   240 bpm   playing"));
      orbel.Type(keys);
    }
    ASSERT_TRUE(orbel.Shows(stands));
    ASSERT_TRUE(HasThread(orbel.GetProcess(), "file_loader2"));
    std::ofstream(gate) << "fail";
    ASSERT_TRUE(test_support::WaitUntil([&] { return !HasThread(orbel.GetProcess(), "file_loader2"); },
                                        std::chrono::minutes(1)));
    const std::size_t before = orbel.GetScreen().size();
    orbel.Type(" ");
    EXPECT_TRUE(orbel.Shows("Song 2 is left out."));
    EXPECT_TRUE(orbel.ShowsLike("1 Waltz   bar (?!1\\.)\\S+   240 bpm   playing"));
    EXPECT_EQ(orbel.GetScreen().find("bar 1.1   240 bpm   playing", before), std::string::npos)
        << "it began at the start of the song";
    orbel.Type("qq");
    EXPECT_EQ(orbel.WaitForEnd(), 0);
  }
};

TEST_F(BrokenSongsBehindAStand, DoNotKeepACaesuraFromBeingLeft) {
  ExpectToGoOn("[[caesura]]\nat = \"1.4\"\n", "", "bar 1.4   240 bpm   waiting at a caesura");
}

TEST_F(BrokenSongsBehindAStand, DoNotKeepAPauseFromBeingLeft) {
  ExpectToGoOn("", "p", "240 bpm   paused");
}

TEST_F(BrokenSongs, BehindACaesuraDoNotKeepARenderFromItsEnd) {
  files_.AddSong("1", "Waltz", kBars, "[[caesura]]\nat = \"5\"\n");
  count_ = 1;
  AddSongs({"Polka", "Galop"});
  const auto breaking = BreakingReadOf("2 Polka.obd");
  const Ended run = Orbel({"render", files_.Show(), "-o", Out(), "--song", "1", "--crossfade", "0"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_TRUE(Heard() == Songs(1));
}

TEST_F(BrokenSongs, ARenderWithoutASongOfItsOwnIsNotGivenAnother) {
  AddSongs({"Waltz", "Polka"});
  const auto breaking = BreakingReadOf("1 Waltz.obd");
  const Ended run = Orbel({"render", files_.Show(), "-o", Out()});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("orbel: data/1 Waltz.obd: "));
  EXPECT_THAT(
      run.messages,
      HasSubstr(Out() + " was not written; name the song to render with --song, for instance --song 2"));
  EXPECT_FALSE(std::filesystem::exists(Out()));
  EXPECT_EQ(Orbel({"render", files_.Show(), "-o", Out(), "--song", "2"}).status, 0);
  EXPECT_TRUE(Heard() == Songs(1));
}

// While the show is open, by a file that this show cannot play.
class ReplacedSongs : public BrokenSongs {
 protected:
  void PutStereoInPlaceOf(const std::string& song) const {
    WriteWav(files_.At("data/" + song + ".new"), FramesFromZero(2 * kFrames), ShowFiles::kRate, 2);
    std::filesystem::rename(files_.At("data/" + song + ".new"), files_.At("data/" + song + ".obd"));
  }
  static constexpr const char* kGalopHasChanged =
      "data/3 Galop.obd: it has 2 channels now and had 1 channel when the show was opened: the file has been "
      "replaced. Put the recording back as it was, or convert it to 1 channel. Song 3 is left out.";
};

TEST_F(ReplacedSongs, WithOtherChannelsAreNamedAndTheOthersPlay) {
  AddSongs({"Waltz", "Polka", "Galop", "March"});
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  PutStereoInPlaceOf("3 Galop");
  orbel.Type("n");
  ASSERT_TRUE(orbel.Shows("2 Polka   bar 1.1   240 bpm   stopped"));
  orbel.Type("n");
  EXPECT_TRUE(orbel.Shows("4 March   bar 1.1   240 bpm   stopped"));
  // Loaded ahead, it can have failed before the second song was shown.
  EXPECT_THAT(orbel.GetScreen(), HasSubstr(kGalopHasChanged));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.ShowsLike("4 March   bar (?!1\\.1 )\\S+   240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(ReplacedSongs, WithOtherChannelsThatAnAttaccaRunsIntoAreNamedAndLeftOut) {
  AddSongs({"Waltz"});
  files_.AddSong("2", "Polka", 1, "attacca = true\n");
  count_ = 2;
  AddSongs({"Galop", "March"});
  const std::string gate = files_.Beside("gate");
  std::ofstream(gate) << "open";
  const auto holding = Refusing({{"ORBEL_HOLD_READ", "3 Galop.obd:0"}, {"ORBEL_HOLD_UNTIL", gate}});
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  PutStereoInPlaceOf("3 Galop");
  std::filesystem::remove(gate);
  orbel.Type("n");
  ASSERT_TRUE(orbel.Shows("2 Polka   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("3 Galop   bar 1.1   240 bpm   loading"));
  std::ofstream(gate) << "open";
  EXPECT_TRUE(orbel.Shows(kGalopHasChanged));
  EXPECT_TRUE(orbel.Shows("4 March   bar 1.1   240 bpm   stopped"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(ReplacedSongs, WithAnotherRateAreResampledAndPlay) {
  AddSongs({"Waltz", "Polka", "Galop"});
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  WriteWav(files_.At("data/3 Galop.obd"), FramesFromZero(2 * kFrames), 2 * ShowFiles::kRate);
  orbel.Type("nn");
  EXPECT_TRUE(orbel.Shows("3 Galop.obd: its 16000 Hz are resampled to 8000 Hz"));
  EXPECT_TRUE(orbel.Shows("3 Galop   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.ShowsLike("3 Galop   bar (?!1\\.1 )\\S+   240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

}  // namespace
}  // namespace faults
