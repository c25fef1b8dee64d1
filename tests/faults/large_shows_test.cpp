// Shows and songs that are larger than any evening.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "reference_suite/midi/standard_midi_file/smf_writer.h"
#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using testing::HasSubstr;

void WriteSmf(const ShowFiles& files, const std::string& path, const tesk_midi::SmfWriter& midi) {
  const std::vector<std::uint8_t> bytes = midi.Bytes();
  files.Write(path, std::string(bytes.begin(), bytes.end()));
}

TEST(LargeShow, OfTwoThousandSongsOpens) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  for (int number = 2; number <= 2000; ++number) {
    const std::string title = std::to_string(number) + " Song";
    std::filesystem::create_symlink(files.At("songs/1 Waltz.mid"), files.At("songs/" + title + ".mid"));
    std::filesystem::create_symlink(files.At("data/1 Waltz.obd"), files.At("data/" + title + ".obd"));
  }
  const Ended where = Orbel({"where", files.Show(), "2000", "1.3"});
  EXPECT_EQ(where.status, 0) << where.messages;
  const Ended run = Orbel({"render", files.Show(), "-o", files.Beside("out.wav"), "--song", "1999"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(host_tests::ReadFloatWav(files.Beside("out.wav")).size(), ShowFiles::kRate);
}

// Whoever is about to play reads what can be read, and whoever checks every one.
class LargeShowOfBadRecordings : public testing::Test {
 protected:
  static constexpr int kBad = 45;
  LargeShowOfBadRecordings() {
    files_.AddSong("1", "Waltz", 1);
    files_.Write("data/1 Waltz.obd", "no audio");
    for (int number = 2; number <= kBad; ++number) {
      const std::string title = std::to_string(number) + " Song";
      std::filesystem::create_symlink(files_.At("songs/1 Waltz.mid"), files_.At("songs/" + title + ".mid"));
      files_.Write("data/" + title + ".obd", "no audio");
    }
  }
  static int Count(const std::string& text, const std::string& words) {
    int count = 0;
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) ++count;
    return count;
  }
  void ExpectTheFirstTwentyAndANumber(const std::string& messages) const {
    EXPECT_EQ(Count(messages, "this is not audio that can be decoded"), 20) << messages;
    EXPECT_THAT(messages, HasSubstr("and 25 more problems; \"orbel check " + files_.Show() +
                                    "\" looks at every song\n"));
  }

  ShowFiles files_;
  const std::string out_ = files_.Beside("out.wav");
};

TEST_F(LargeShowOfBadRecordings, TellsTheFirstTwentyWhenNoneCanBePlayed) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"render", files_.Show(), "-o", out_},
        std::vector<std::string>{"play", files_.Show(), "--output", "null"}}) {
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 1);
    ExpectTheFirstTwentyAndANumber(run.messages);
  }
}

TEST_F(LargeShowOfBadRecordings, TellsTheFirstTwentyBesideASongThatPlays) {
  files_.AddSong("46", "Polka", 1);
  const Ended render = Orbel({"render", files_.Show(), "-o", out_, "--song", "46"});
  EXPECT_EQ(render.status, 0) << render.messages;
  ExpectTheFirstTwentyAndANumber(render.messages);
  const Ended play = Orbel({"play", files_.Show(), "--output", "null"});
  EXPECT_EQ(play.status, 0) << play.messages;
  ExpectTheFirstTwentyAndANumber(play.messages);
}

TEST_F(LargeShowOfBadRecordings, IsToldOfCompletelyByACheck) {
  const Ended check = Orbel({"check", files_.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_EQ(Count(check.out, "this is not audio that can be decoded"), kBad);
}

TEST(LargeSong, OfTenThousandTemposPlays) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 8);
  tesk_midi::SmfWriter midi(480);
  for (unsigned index = 0; index < 10'000; ++index) midi.Tempo(index, 300'000 + index);
  midi.End(10'000);
  WriteSmf(files, "songs/1 Waltz.mid", midi);
  const Ended run = Orbel({"render", files.Show(), "-o", files.Beside("out.wav")});
  EXPECT_EQ(run.status, 0) << run.messages;
  // Each tempo's stretch is rounded by itself: a tick of 5.00 to 5.17 frames is 5.
  EXPECT_EQ(host_tests::ReadFloatWav(files.Beside("out.wav")).size(), 50'000U);
}

// Stretches of 67 and of 68 frames, so that nothing is rounded at their ends: the song is as long as its
// tempos say, and no tick inside a stretch is a whole frame from its place.
TEST(LargeSong, OfTenThousandTemposHasItsExactLengthAndPlaces) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 85);
  tesk_midi::SmfWriter midi(480);
  std::vector<double> startSeconds;
  double now = 0.0;
  for (unsigned index = 0; index < 10'000; ++index) {
    startSeconds.push_back(now);
    // 5,016 of the 10,000, evenly.
    const bool isLong = (index + 1) * 5016 / 10'000 > index * 5016 / 10'000;
    midi.Tempo(index * 12, isLong ? 340'000 : 335'000);
    now += isLong ? 0.0085 : 0.008375;
  }
  midi.End(120'000);
  WriteSmf(files, "songs/1 Waltz.mid", midi);
  EXPECT_THAT(Orbel({"info", files.Show()}).out, HasSubstr("1:24.377"));
  const Ended run = Orbel({"render", files.Show(), "-o", files.Beside("out.wav")});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(host_tests::ReadFloatWav(files.Beside("out.wav")).size(), 675'016U);
  for (const unsigned index : {0U, 1U, 777U, 5'000U, 9'998U}) {
    const double tickSeconds = (startSeconds[index + 1] - startSeconds[index]) / 12;
    for (const unsigned tick : {0U, 1U, 7U, 11U}) {
      const Ended where =
          Orbel({"where", files.Show(), "1", "tick:" + std::to_string(12 * index + tick), "--json"});
      const std::size_t at = where.out.find("\"sample\":");
      ASSERT_NE(at, std::string::npos) << where.out << where.messages;
      const double sample = std::stod(where.out.substr(at + 9));
      EXPECT_NEAR(sample, (startSeconds[index] + tick * tickSeconds) * ShowFiles::kRate, 0.999);
    }
  }
}

// Each plays what it holds twice: of the whole there would be no end.
TEST(LargeSong, OfThreeThousandNestedRepeatsIsCheckedShownAndPlayed) {
  constexpr int kRepeats = 3000;
  std::string cues;
  for (int depth = 0; depth < kRepeats; ++depth) {
    cues += "[[repeat]]\nfrom = { tick = " + std::to_string(depth) +
            " }\nto = { tick = " + std::to_string(15'360 - depth) + " }\n";
  }
  ShowFiles files;
  files.AddSong("1", "Waltz", 8, cues);
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.status, 0) << check.out.substr(0, 1000);
  EXPECT_EQ(Orbel({"info", files.Show()}).status, 0);
  std::ofstream(files.Beside("script")) << "time 60 stop\n";
  const Ended run = Orbel({"render", files.Show(), "-o", files.Beside("out.wav"), "--crossfade", "0",
                           "--script", files.Beside("script")});
  EXPECT_EQ(run.status, 0) << run.messages;
  const std::vector<float> heard = host_tests::ReadFloatWav(files.Beside("out.wav"));
  ASSERT_GE(heard.size(), 60U * ShowFiles::kRate);
  // The innermost one first: bars 1 to 7 and a bit, then back by all that it holds.
  const auto frameOf = [](unsigned tick) { return std::llround(tick * ShowFiles::kRate / 1920.0); };
  const long long from = frameOf(kRepeats - 1);
  const long long to = frameOf(15'360 - (kRepeats - 1));
  EXPECT_EQ(heard[static_cast<std::size_t>(to) - 1], host_tests::FrameValue(to - 1));
  EXPECT_EQ(heard[static_cast<std::size_t>(to)], host_tests::FrameValue(from));
}

TEST(LargeSong, Of27HoursOfMidiIsShownAndWarnedOf) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 8);
  tesk_midi::SmfWriter midi(480);
  midi.Tempo(0, 1'000'000);
  for (unsigned hour = 1; hour <= 27; ++hour) midi.Marker(hour * 3600 * 480, "Hour");
  midi.End(27 * 3600 * 480);
  WriteSmf(files, "songs/1 Waltz.mid", midi);
  const Ended info = Orbel({"info", files.Show()});
  EXPECT_EQ(info.status, 0) << info.messages;
  EXPECT_THAT(info.out, HasSubstr("1620:00.000"));
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.status, 0);
  EXPECT_THAT(check.out, HasSubstr("is shorter than the song: 0:08.000 of 1620:00.000"));
}

}  // namespace
}  // namespace faults
