#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <set>
#include <sstream>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"
#include "tests/support/wait_until.h"

namespace host_tests {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr long long kBar = ShowFiles::kRate;  // a bar lasts one second

// A passage of a song's audio.
struct Piece {
  long long from;
  long long to;
};

class Render : public testing::Test {
 protected:
  // Every sample as it was recorded.
  Ended Play(const std::vector<std::string>& options) {
    return PlayWith({"--crossfade", "0", "--fade", "0"}, options);
  }
  Ended PlayWith(std::vector<std::string> arguments, const std::vector<std::string>& options) {
    arguments.insert(arguments.begin(), {"render", files_.Show(), "-o", Out()});
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Orbel(arguments);
  }
  std::string Out() const { return files_.Beside("out.wav"); }

  std::string Script(const std::string& text) {
    files_.Write("../script.txt", text);
    return files_.Beside("script.txt");
  }

  // Every frame of the output is the one that belongs there. Bars count from 1; "silence" is a piece before
  // bar 1.
  void ExpectOutput(const std::vector<Piece>& pieces) {
    std::vector<float> expected;
    for (const Piece& piece : pieces) {
      for (long long frame = piece.from; frame < piece.to; ++frame) {
        expected.push_back(frame < 0 ? 0.0F : FrameValue(frame));
      }
    }
    const std::vector<float> heard = ReadFloatWav(Out());
    EXPECT_EQ(heard.size(), expected.size());
    for (std::size_t index = 0; index < std::min(heard.size(), expected.size()); ++index) {
      ASSERT_EQ(heard[index] * 16777216.0F, expected[index] * 16777216.0F) << "at frame " << index;
    }
  }

  static Piece Bars(int from, int to) { return {(from - 1) * kBar, (to - 1) * kBar}; }
  static Piece Silence(double seconds) { return {-static_cast<long long>(seconds * ShowFiles::kRate), 0}; }

  ShowFiles files_;
};

TEST_F(Render, ASongWithoutCuesIsItsAudioFrameForFrame) {
  files_.AddSong("1", "Waltz", 8);
  const Ended run = Play({});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.messages, Out() + ": 0:08.000, 64000 frames\n");
  ExpectOutput({Bars(1, 9)});
}

TEST_F(Render, AVampIsPlayedAsOftenAsAskedFor) {
  files_.AddSong("1", "Waltz", 8, "[[vamp]]\nfrom = \"3\"\nto = \"5\"\n");
  EXPECT_EQ(Play({}).status, 0);
  ExpectOutput({Bars(1, 9)});
  EXPECT_EQ(Play({"--vamp-passes", "3"}).status, 0);
  ExpectOutput({Bars(1, 5), Bars(3, 5), Bars(3, 9)});
}

TEST_F(Render, AVampThatGoLeavesAtABarOrABeatHasWholePassesToo) {
  for (const std::string exit : {"bar", "beat"}) {
    files_.AddSong("1", "Waltz", 8, "[[vamp]]\nfrom = \"3\"\nto = \"5\"\nexit = \"" + exit + "\"\n");
    EXPECT_EQ(Play({"--vamp-passes", "2"}).status, 0) << exit;
    ExpectOutput({Bars(1, 5), Bars(3, 9)});
  }
}

TEST_F(Render, AVampInsideARepeatIsPlayedAsOftenEachTime) {
  files_.AddSong("1", "Waltz", 8,
                 "[[repeat]]\nfrom = \"2\"\nto = \"6\"\npasses = 2\n[[vamp]]\nfrom = \"3\"\nto = \"4\"\n");
  EXPECT_EQ(Play({"--vamp-passes", "2"}).status, 0);
  ExpectOutput({Bars(1, 4), Bars(3, 6), Bars(2, 4), Bars(3, 9)});
}

TEST_F(Render, RepeatsCutsAndSafetiesAreSplicedOnTheSample) {
  files_.AddSong("1", "Waltz", 8,
                 "[[repeat]]\nfrom = \"2\"\nto = \"3\"\npasses = 3\n[[safety]]\nfrom = \"4\"\nto = \"5\"\n"
                 "[[cut]]\nfrom = \"6\"\nto = \"7.3\"\n");
  EXPECT_EQ(Play({}).status, 0);
  ExpectOutput({Bars(1, 3), Bars(2, 3), Bars(2, 6), {6 * kBar + kBar / 2, 8 * kBar}});
}

TEST_F(Render, ACaesuraWaitsInSilenceAndGoesOn) {
  files_.AddSong("1", "Waltz", 4, "[[caesura]]\nat = \"3\"\n");
  EXPECT_EQ(Play({}).status, 0);
  ExpectOutput({Bars(1, 5)});
  EXPECT_EQ(Play({"--caesura-silence", "0.5"}).status, 0);
  ExpectOutput({Bars(1, 3), Silence(0.5), Bars(3, 5)});
}

TEST_F(Render, FromStartsThere) {
  files_.AddSong("1", "Waltz", 4);
  EXPECT_EQ(Play({"--from", "3.3"}).status, 0);
  ExpectOutput({{2 * kBar + kBar / 2, 4 * kBar}});
}

TEST_F(Render, SongChoosesTheSongAndTheFirstInRunningOrderIsTheDefault) {
  files_.AddSong("1", "Waltz", 2);
  files_.AddSong("2", "Polka", 3);
  files_.AddSong("10", "Galop", 4);
  files_.Write("show.toml", "format = 1\norder = [\"2\", \"1\"]\n");
  EXPECT_EQ(Play({}).status, 0);
  ExpectOutput({Bars(1, 4)});
  EXPECT_EQ(Play({"--song", "10"}).status, 0);
  ExpectOutput({Bars(1, 5)});
}

TEST_F(Render, AttaccaRunsOnIntoTheSongsThatFollow) {
  files_.AddSong("1", "Waltz", 2, "attacca = true\n");
  files_.AddSong("2", "Polka", 3, "attacca = true\n");
  files_.AddSong("3", "Galop", 2);
  files_.AddSong("4", "Finale", 2);
  EXPECT_EQ(Play({}).status, 0);
  ExpectOutput({Bars(1, 3), Bars(1, 4), Bars(1, 3)});
}

TEST_F(Render, SongsOfAnotherRateAreResampledToThatOfTheFirst) {
  files_.AddSong("1", "Waltz", 2, "attacca = true\n");
  files_.AddSong("2", "Polka", 3);
  WriteWav(files_.At("data/2 Polka.obd"), std::vector<float>(3 * 16000, 0.25F), 16000);
  EXPECT_EQ(Play({}).status, 0);
  EXPECT_EQ(ReadFloatWav(Out()).size(), 5U * ShowFiles::kRate);
}

TEST_F(Render, RateChoosesTheRateOfTheOutput) {
  files_.AddSong("1", "Waltz", 2);
  EXPECT_EQ(Play({"--rate", "16000"}).status, 0);
  EXPECT_EQ(ReadFloatWav(Out()).size(), 2U * 16000);
}

TEST_F(Render, TheSameShowGivesTheSameBytes) {
  files_.AddSong("1", "Waltz", 8, "[[vamp]]\nfrom = \"3\"\nto = \"5\"\n[[cut]]\nfrom = \"6\"\nto = \"7\"\n");
  const auto render = [&](const std::string& out) {
    EXPECT_EQ(Orbel({"render", files_.Show(), "-o", files_.Beside(out), "--vamp-passes", "2"}).status, 0);
    return ReadText(files_.Beside(out));
  };
  const std::string first = render("a.wav");
  EXPECT_FALSE(first.empty());
  EXPECT_TRUE(first == render("b.wav"));
}

TEST_F(Render, EveryFormatGivesTheSameBytesAgain) {
  files_.AddSong("1", "Waltz", 2);
  for (const std::string format : {"pcm24", "pcm16", "flac", "ogg"}) {
    EXPECT_EQ(Play({"--format", format}).status, 0);
    const std::string first = ReadText(Out());
    EXPECT_EQ(Play({"--format", format}).status, 0);
    EXPECT_TRUE(first == ReadText(Out())) << format;
  }
}

TEST_F(Render, ACrossfadeChangesNeitherLengthNorPlace) {
  files_.AddSong("1", "Waltz", 4, "[[cut]]\nfrom = \"2\"\nto = \"3\"\n");
  EXPECT_EQ(Orbel({"render", files_.Show(), "-o", Out()}).status, 0);
  const std::vector<float> heard = ReadFloatWav(Out());
  ASSERT_EQ(heard.size(), 3U * kBar);
  EXPECT_EQ(heard[kBar - 1], FrameValue(kBar - 1));
  EXPECT_NE(heard[kBar + 10], FrameValue(2 * kBar + 10)) << "under the cross-fade";
  EXPECT_EQ(heard[kBar + 40], FrameValue(2 * kBar + 40)) << "5 ms later it is over";
}

TEST_F(Render, EveryFormatIsWritten) {
  files_.AddSong("1", "Waltz", 2);
  const std::vector<std::pair<std::string, std::string>> formats{
      {"float", "RIFF"}, {"pcm24", "RIFF"}, {"pcm16", "RIFF"}, {"flac", "fLaC"}, {"ogg", "OggS"}};
  for (const auto& [format, magic] : formats) {
    EXPECT_EQ(Play({"--format", format}).status, 0) << format;
    EXPECT_EQ(ReadText(Out()).substr(0, 4), magic) << format;
  }
}

TEST_F(Render, ANameThatPromisesAnotherFormatIsWarnedOf) {
  files_.AddSong("1", "Waltz", 2);
  const std::string flac = files_.Beside("out.flac");
  const Ended run = Orbel({"render", files_.Show(), "-o", flac});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(
      run.messages,
      StartsWith("warning: " + flac + ": becomes WAV, whatever it is called; --format flac makes it FLAC\n"));
  EXPECT_EQ(ReadText(flac).substr(0, 4), "RIFF");
  EXPECT_THAT(Play({"--format", "ogg"}).messages,
              StartsWith("warning: " + Out() +
                         ": becomes Ogg Vorbis, whatever it is called; --format float makes it WAV\n"));
  for (const auto& [name, format] :
       {std::pair("out.flac", "flac"), std::pair("out.wav", "pcm16"), std::pair("out", "ogg")}) {
    const Ended silent = Orbel({"render", files_.Show(), "-o", files_.Beside(name), "--format", format});
    EXPECT_THAT(silent.messages, Not(HasSubstr("warning"))) << name;
  }
}

// ---- scripts -----------------------------------------------------------------------------------

TEST_F(Render, AScriptLeavesAVampInThePassThatItNames) {
  files_.AddSong("1", "Waltz", 8, "[[vamp]]\nfrom = \"3\"\nto = \"5\"\n");
  EXPECT_EQ(Play({"--script", Script("at 4 pass 3 go  # third time round\n")}).status, 0);
  ExpectOutput({Bars(1, 5), Bars(3, 5), Bars(3, 9)});
}

TEST_F(Render, AScriptGoesOnFromCaesurasOneLineEach) {
  files_.AddSong("1", "Waltz", 4, "[[caesura]]\nat = \"2\"\n[[caesura]]\nat = \"3\"\n");
  EXPECT_EQ(Play({"--script", Script("waiting go\nwaiting go\n")}).status, 0);
  ExpectOutput({Bars(1, 5)});
}

TEST_F(Render, AScriptThatEndsAtACaesuraEndsTheRenderThere) {
  files_.AddSong("1", "Waltz", 4, "[[caesura]]\nat = \"2\"\n[[caesura]]\nat = \"3.2\"\n");
  const Ended run = Play({"--script", Script("waiting go\n")});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.messages,
              HasSubstr("orbel: the script ends while playback waits at the caesura at 3.2.0 of song 1\n"));
  ExpectOutput({{0, 2 * kBar + kBar / 4}});
}

TEST_F(Render, AVampThatNothingLeavesEndsWithStatusThreeAfterItsNextPass) {
  files_.AddSong("1", "Waltz", 8, "[[vamp]]\nfrom = \"3\"\nto = \"5\"\n");
  const Ended run = Play({"--script", Script("at 2 again\n")});
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.messages,
              HasSubstr("of song 1 goes on for ever: nothing in the script leaves it any more\n"));
}

TEST_F(Render, ASeekInAScriptMovesWithinOneRead) {
  files_.AddSong("1", "Waltz", 8);
  const Ended run = Play({"--script", Script("at 3 seek 7\n")});
  EXPECT_EQ(run.status, 0) << run.messages;
  const std::vector<float> heard = ReadFloatWav(Out());
  ASSERT_EQ(heard.size() % 1, 0U);
  EXPECT_EQ(heard[2 * kBar - 1], FrameValue(2 * kBar - 1));
  EXPECT_EQ(heard.back(), FrameValue(8 * kBar - 1));
  const auto over = static_cast<long long>(heard.size()) - 4 * kBar;
  EXPECT_GE(over, 0);
  EXPECT_LE(over, 256) << "the command waits for the next read and no longer";
}

// Of a slow wave, the largest step from one frame to the next, which a splice exceeds.
class RenderedWave : public Render {
 protected:
  RenderedWave() {
    files_.AddSong("1", "Waltz", 8);
    files_.AddSong("2", "Polka", 8);
    std::vector<float> wave;
    for (int frame = 0; frame < 8 * kBar; ++frame) {
      wave.push_back(static_cast<float>(0.5 * std::sin(frame * 0.01)));
    }
    WriteWav(files_.At("data/1 Waltz.obd"), wave, ShowFiles::kRate);
    WriteWav(files_.At("data/2 Polka.obd"), wave, ShowFiles::kRate);
  }

  // In parts of the loudest sample; with what follows the last frame, which is silence.
  double LargestStep(const std::string& script, const std::vector<std::string>& options = {}) {
    const Ended run = PlayWith(options, {"--script", Script(script)});
    EXPECT_EQ(run.status, 0) << run.messages;
    std::vector<float> heard = ReadFloatWav(Out());
    heard.push_back(0.0F);
    double largest = 0.0;
    for (std::size_t i = 1; i < heard.size(); ++i) {
      largest =
          std::max(largest, std::fabs(static_cast<double>(heard[i]) - static_cast<double>(heard[i - 1])));
    }
    return largest / 0.5;
  }
};

TEST_F(RenderedWave, ASeekAPauseAndAStopFade) {
  // 3 ms are 24 frames, in which the whole way from peak to peak may lie.
  constexpr double kFaded = 2.0 / 24.0 + 0.02;
  EXPECT_GT(LargestStep("at 3 seek 7.3\n", {"--fade", "0"}), 0.2) << "a splice";
  EXPECT_LT(LargestStep("at 3 seek 7.3\nat 8 stop\n"), kFaded);
  EXPECT_GT(LargestStep("time 1.3 pause\ntime 2 play\nat 5 stop\n", {"--fade", "0"}), 0.2);
  EXPECT_LT(LargestStep("time 1.3 pause\ntime 2 play\nat 5 stop\n"), kFaded);
  EXPECT_LT(LargestStep("at 2.3 next\nat 5 stop\n"), kFaded);
  EXPECT_LT(LargestStep("at 2 tempo 0.8\nat 3 seek 7.3\nat 8 stop\n"), kFaded) << "stretched too";
}

TEST_F(RenderedWave, TheFadeAtTheEndStandsInTheTrace) {
  const std::string trace = files_.Beside("trace.csv");
  ASSERT_EQ(PlayWith({}, {"--script", Script("at 5 stop\n"), "--trace", trace}).status, 0);
  std::istringstream rows(ReadText(trace));
  std::string row;
  std::getline(rows, row);
  std::size_t last = 0;
  std::size_t frames = 0;
  while (std::getline(rows, row)) {
    std::istringstream cells(row);
    for (int i = 0; i < 4; ++i) std::getline(cells, row, ',');
    frames += last = std::stoul(row);
  }
  EXPECT_EQ(last, 24U);
  EXPECT_EQ(frames, ReadFloatWav(Out()).size());
}

TEST_F(Render, ASeekOntoACaesuraWaitsThere) {
  files_.AddSong("1", "Waltz", 8, "[[caesura]]\nat = \"5\"\n");
  const std::string trace = files_.Beside("trace.csv");
  EXPECT_EQ(Play({"--script", Script("at 2 seek 5\nwaiting go\n"), "--trace", trace}).status, 0);
  const std::vector<float> heard = ReadFloatWav(Out());
  EXPECT_GE(heard.size(), 5U * kBar);
  EXPECT_LE(heard.size(), 5U * kBar + 256);
  EXPECT_EQ(heard[heard.size() - 4 * kBar], FrameValue(4 * kBar));
}

TEST_F(Render, GoShortlyBeforeACaesuraPassesItBy) {
  files_.AddSong("1", "Waltz", 4, "[[caesura]]\nat = \"3\"\n");
  EXPECT_EQ(Play({"--script", Script("at 2.2 go\n")}).status, 0);
  ExpectOutput({Bars(1, 5)});
}

TEST_F(Render, AgainPlaysASafetyOnceMore) {
  files_.AddSong("1", "Waltz", 4, "[[safety]]\nfrom = \"2\"\nto = \"3\"\n");
  EXPECT_EQ(Play({"--script", Script("at 2.2 again\n")}).status, 0);
  ExpectOutput({Bars(1, 3), Bars(2, 5)});
}

TEST_F(Render, PreviousGoesBackToTheStartOfTheSong) {
  files_.AddSong("1", "Waltz", 4);
  EXPECT_EQ(Play({"--script", Script("at 3 previous\n")}).status, 0);
  const std::vector<float> heard = ReadFloatWav(Out());
  EXPECT_GE(heard.size(), 6U * kBar);
  EXPECT_LE(heard.size(), 6U * kBar + 256);
  EXPECT_EQ(heard[heard.size() - 4 * kBar], FrameValue(0));
}

TEST_F(Render, TimeCommandsCountSecondsOfOutput) {
  files_.AddSong("1", "Waltz", 8);
  EXPECT_EQ(Play({"--script", Script("time 2.500 stop\n")}).status, 0);
  const auto over = static_cast<long long>(ReadFloatWav(Out()).size()) - 20000;
  EXPECT_GE(over, 0);
  EXPECT_LE(over, 256);
}

TEST_F(Render, APauseIsSilenceUntilTheNextTimeCommand) {
  files_.AddSong("1", "Waltz", 4);
  EXPECT_EQ(Play({"--script", Script("time 1 pause\ntime 2 play\n")}).status, 0);
  const std::vector<float> heard = ReadFloatWav(Out());
  EXPECT_EQ(heard.back(), FrameValue(4 * kBar - 1));
  const long long silent = std::count(heard.begin(), heard.end(), 0.0F);
  EXPECT_GE(silent, kBar - 256);
  EXPECT_LE(silent, kBar);
  EXPECT_EQ(static_cast<long long>(heard.size()), 4 * kBar + silent);
}

TEST_F(Render, NextGoesOnInTheNextSong) {
  files_.AddSong("1", "Waltz", 8);
  files_.AddSong("2", "Polka", 2);
  EXPECT_EQ(Play({"--script", Script("at 2 next\n")}).status, 0);
  const std::vector<float> heard = ReadFloatWav(Out());
  ASSERT_GE(heard.size(), 3U * kBar);
  EXPECT_LE(heard.size(), 3U * kBar + 256);
  EXPECT_EQ(heard[heard.size() - 2 * kBar], FrameValue(0));
}

TEST_F(Render, AScriptWithAFaultIsRefusedBeforeAnythingIsWritten) {
  files_.AddSong("1", "Waltz", 4);
  const std::string path = Script("\nat 2 dance\n");
  const Ended run = Play({"--script", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("orbel: " + path + ":2: found \"dance\", expected a command: go, "));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

TEST_F(Render, AScriptThatNamesAPlaceThatNoSongHasIsRefused) {
  files_.AddSong("1", "Waltz", 4);
  const std::string path = Script("at 2 go\nat 40 go\n");
  const Ended run = Play({"--script", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("orbel: " + path + ":2: "));
}

// ---- the trace ---------------------------------------------------------------------------------

std::vector<std::vector<std::string>> Rows(const std::string& csv) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(csv);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::istringstream fields(line + ",");
    for (std::string field; std::getline(fields, field, ',');) rows.back().push_back(field);
  }
  return rows;
}

TEST_F(Render, TheTraceHasOneRowAReadAndItsFramesAreTheFile) {
  files_.AddSong("1", "Waltz", 3, "attacca = true\n[[cut]]\nfrom = \"2\"\nto = \"3\"\n");
  files_.AddSong("2", "Polka", 2, "[[caesura]]\nat = \"2\"\n");
  const std::string trace = files_.Beside("trace.csv");
  EXPECT_EQ(Play({"--trace", trace, "--caesura-silence", "0.25"}).status, 0);
  auto rows = Rows(ReadText(trace));
  ASSERT_GT(rows.size(), 2U);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"output_frame", "song", "sample", "frames", "tick",
                                               "next_tick", "scale", "transposition", "event"}));
  rows.erase(rows.begin());
  long long frames = 0;
  std::string events;
  for (const auto& row : rows) {
    ASSERT_EQ(row.size(), 9U);
    EXPECT_EQ(std::stoll(row[0]), frames);
    frames += std::stoll(row[3]);
    EXPECT_EQ(row[6], "1");
    EXPECT_EQ(row[7], "0");
    if (!row[8].empty()) events += row[1] + ":" + row[8] + "@" + row[4] + " ";
  }
  EXPECT_EQ(frames, static_cast<long long>(ReadFloatWav(Out()).size()));
  EXPECT_EQ(events, "1:jump@3840 1:attacca@5760 2:caesura@1920 2:end@3840 ");
}

// ---- other tempos and keys -------------------------------------------------------------------------

TEST_F(Render, OtherTemposAndKeysArePlayedAndTraced) {
  files_.AddSong("1", "Waltz", 4,
                 "[[tempo]]\nat = \"2\"\nscale = 0.8\n[[transpose]]\nat = \"3\"\nsemitones = -2\n");
  const std::string trace = files_.Beside("trace.csv");
  const std::string script = Script("at 4 tempo 0.5\n");
  const Ended run = Play({"--script", script, "--trace", trace});
  ASSERT_EQ(run.status, 0) << run.messages;
  const auto rows = Rows(ReadText(trace));
  double length = 0.0;
  std::set<std::string> factors;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    EXPECT_NEAR(std::stod(rows[i][0]), length, 1.0);
    length += std::stod(rows[i][3]) / std::stod(rows[i][6]);
    factors.insert(rows[i][6] + "/" + rows[i][7]);
  }
  EXPECT_EQ(factors, (std::set<std::string>{"1/0", "0.8/0", "0.8/-2", "0.4/-2"}));
  EXPECT_NEAR(static_cast<double>(ReadFloatWav(Out()).size()), length, 1.0);
}

TEST_F(Render, TheStretchIsFinerUnlessAskedOtherwise) {
  files_.AddSong("1", "Waltz", 2, "[[tempo]]\nat = \"1\"\nscale = 0.9\n");
  const auto heard = [this](const std::vector<std::string>& options) {
    EXPECT_EQ(Play(options).status, 0);
    return ReadFloatWav(Out());
  };
  const auto usual = heard({});
  EXPECT_EQ(usual, heard({"--stretch", "finer"}));
  EXPECT_NE(usual, heard({"--stretch", "faster"}));
  EXPECT_EQ(Play({"--stretch", "finest"}).status, 2);
}

// ---- what is left behind -----------------------------------------------------------------------------

TEST_F(Render, CtrlCLeavesNoFile) {
  files_.AddSong("1", "Waltz", 8, "[[vamp]]\nfrom = \"1\"\nto = \"9\"\n");
  RunningOrbel running({"render", files_.Show(), "-o", Out(), "--vamp-passes", "1000000"});
  const auto folder = std::filesystem::path(Out()).parent_path();
  const auto entries = [&] {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
  };
  while (entries() < 2) {
  }  // until the part file appears beside the show
  running.Signal(SIGINT);
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: interrupted: " + Out() + " was not written\n");
  EXPECT_EQ(entries(), 1) << "only the show is left";
}

TEST_F(Render, WhatHasTheNameOfThePartAndIsNotOursIsRefusedAndStays) {
  files_.AddSong("1", "Waltz", 1);
  files_.Write("../precious", "precious");
  std::filesystem::create_symlink(files_.Beside("precious"), Out() + ".part");
  const std::string remedy = "; remove that, or choose another name.\n";
  Ended run = Play({});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: " + Out() + ": cannot be written: " + Out() +
                              ".part, as it is called until it is complete, is a link" + remedy);
  EXPECT_EQ(ReadText(files_.Beside("precious")), "precious");
  const std::string trace = files_.Beside("trace.csv");
  ASSERT_EQ(::mkfifo((trace + ".part").c_str(), 0600), 0);
  std::filesystem::remove(Out() + ".part");
  run = Play({"--trace", trace});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: " + trace + ": cannot be written: " + trace +
                              ".part, as it is called until it is complete, is a pipe or a device" + remedy);
  EXPECT_FALSE(std::filesystem::exists(Out()));
  EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
}

TEST_F(Render, WhatAKilledOneHasLeftIsWrittenOver) {
  files_.AddSong("1", "Waltz", 1);
  ASSERT_EQ(Play({}).status, 0);
  const std::string expected = ReadText(Out());
  files_.Write("../" + std::filesystem::path(Out()).filename().string() + ".part",
               std::string(1'000'000, 'x'));
  EXPECT_EQ(Play({}).status, 0);
  EXPECT_TRUE(ReadText(Out()) == expected);
  EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
}

TEST_F(Render, ATraceIntoAPipeThatNobodyReadsIsToldAtOnce) {
  files_.AddSong("1", "Waltz", 1);
  const std::string pipe = files_.Beside("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  RunningOrbel running({"render", files_.Show(), "-o", Out(), "--trace", pipe});
  EXPECT_TRUE(running.EndsWithin(std::chrono::seconds(20)));
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages,
            "orbel: " + pipe +
                ": cannot be written: it is a pipe that nobody reads. Start its reader first, or "
                "give another name.\n");
  EXPECT_FALSE(std::filesystem::exists(Out()));
  EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
}

// It waits for room, as long as nobody ends it.
TEST_F(Render, ATraceIntoAPipeWhoseReaderStandsEndsAtAnInterrupt) {
  files_.AddSong("1", "Waltz", 8, "[[vamp]]\nfrom = \"1\"\nto = \"9\"\n");
  const std::string pipe = files_.Beside("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const int signal : {SIGINT, SIGTERM}) {
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    RunningOrbel running({"render", files_.Show(), "-o", Out(), "--vamp-passes", "1000000", "--trace", pipe});
    const auto held = [&] {
      int count = 0;
      return ::ioctl(reader, FIONREAD, &count) == 0 && count > 60'000;
    };
    EXPECT_TRUE(test_support::WaitUntil(held, std::chrono::minutes(1)));
    running.Signal(signal);
    EXPECT_TRUE(running.EndsWithin(std::chrono::seconds(20)));
    const Ended run = running.WaitForEnd();
    ::close(reader);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.messages, "orbel: interrupted: " + Out() + " was not written\n");
    EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
  }
}

TEST_F(Render, NeitherAFolderNorADeviceIsReplaced) {
  files_.AddSong("1", "Waltz", 1);
  Ended run = Orbel({"render", files_.Show(), "-o", files_.Show()});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: " + files_.Show() +
                              ": cannot be written: there is a folder of that name. Choose another name.\n");
  run = Orbel({"render", files_.Show(), "-o", "/dev/null"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages,
            "orbel: /dev/null: cannot be written: there is a device or a pipe of that name. Choose another "
            "name.\n");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(Render, NothingOfTheShowIsWrittenOver) {
  files_.AddSong("1", "Waltz", 1);
  const std::string before = ReadText(files_.At("data/1 Waltz.obd"));
  for (const char* part : {"show.toml", "songs/1 Waltz.mid", "data/1 Waltz.obd", "data/../songs/new.wav"}) {
    const std::string path = files_.At(part).string();
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{"-o", path}, {"-o", Out(), "--trace", path}}) {
      std::vector<std::string> arguments{"render", files_.Show()};
      arguments.insert(arguments.end(), more.begin(), more.end());
      const Ended run = Orbel(arguments);
      EXPECT_EQ(run.status, 2) << part;
      EXPECT_EQ(run.messages,
                "orbel: " + path + ": is a place of the show itself; choose a name outside of it\n");
    }
  }
  EXPECT_EQ(ReadText(files_.At("data/1 Waltz.obd")), before);
}

TEST_F(Render, SoundTraceAndScriptAreThreeFiles) {
  files_.AddSong("1", "Waltz", 1);
  Ended run = Play({"--trace", files_.Beside("show/../") + std::filesystem::path(Out()).filename().string()});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.messages, HasSubstr(": sound and trace cannot be one file; give --trace another name\n"));
  files_.Write("../script.txt", "time 0.5 stop\n");
  const std::string script = files_.Beside("script.txt");
  run = Play({"--script", script, "--trace", script});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.messages,
            "orbel: " + script + ": is the script, and would be written over; choose another name\n");
  EXPECT_EQ(ReadText(script), "time 0.5 stop\n");
}

// What a file is called until it is complete belongs to it.
TEST_F(Render, NoneIsCalledAsAnotherIsUntilItIsComplete) {
  files_.AddSong("1", "Waltz", 1);
  const std::string part = Out() + ".part";
  Ended run = Play({"--trace", part});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(
      run.messages,
      "orbel: " + part + ": sound or trace is called so until it is complete; give --trace another name\n");
  EXPECT_FALSE(std::filesystem::exists(Out()));
  run = Orbel({"render", files_.Show(), "-o", part, "--trace", Out()});
  EXPECT_EQ(run.status, 2);
  files_.Write("../" + std::filesystem::path(part).filename().string(), "time 0.5 stop\n");
  run = Play({"--script", part});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.messages,
            "orbel: " + Out() + ": is called as the script is until it is complete; choose another name\n");
  EXPECT_EQ(ReadText(part), "time 0.5 stop\n");
}

TEST_F(Render, StandardOutputHasTheResultsAloneWhateverTheAudioLibrarySays) {
  files_.AddSong("1", "Waltz", 1);
  const Ended run = Play({"--rate", "16000", "--trace", "/dev/stdout"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.out, testing::StartsWith("output_frame,song,"));
  EXPECT_THAT(run.out, testing::Not(HasSubstr("resampled")));
  EXPECT_THAT(run.messages, HasSubstr("warning: data/1 Waltz.obd: its 8000 Hz are resampled to 16000 Hz.\n"));
  EXPECT_TRUE(std::filesystem::is_symlink("/dev/stdout")) << "the rows went where it leads";
}

TEST_F(Render, AFolderThatIsNotThereIsNamed) {
  files_.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("no/out.wav")});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages,
              HasSubstr(files_.Beside("no/out.wav") + ": cannot be written: No such file or directory"));
}

TEST_F(Render, ABrokenSongIsNamedWithItsFile) {
  files_.AddSong("1", "Waltz", 4);
  files_.Write("data/1 Waltz.obd", "this is no audio");
  const Ended run = Play({"--song", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("1 Waltz.obd"));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

TEST_F(Render, ABrokenSongElsewhereInTheShowIsPassedOverAndSaid) {
  files_.AddSong("1", "Waltz", 2);
  files_.AddSong("2", "Polka", 2);
  files_.AddSong("3", "Galop", 2);
  files_.Write("data/1 Waltz.obd", "this is no audio");
  const Ended run = Play({"--song", "2"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("1 Waltz.obd"));
  ExpectOutput({Bars(1, 3)});
}

TEST_F(Render, AFaultInTheCuesIsNamedWithFileAndLine) {
  files_.AddSong("1", "Waltz", 4, "[[vamp]]\nfrom = \"3\"\nto = \"40\"\n");
  const Ended run = Play({});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("songs/1 Waltz.toml:4"));
}

}  // namespace
}  // namespace host_tests
