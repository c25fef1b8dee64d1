// Audio that is cut off, damaged or strange: found by the check, and either played as far as it goes or told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/limit.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ReadFloatWav;
using host_tests::ShowFiles;
using test_support::Limit;
using testing::HasSubstr;

constexpr int kVorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
constexpr int kRate = ShowFiles::kRate;
constexpr int kBars = 4;

// Song 1 has the audio that a test gives it, song 2 is sound.
class DamagedAudio : public testing::Test {
 protected:
  DamagedAudio() {
    files_.AddSong("1", "Waltz", kBars);
    files_.AddSong("2", "Polka", 1);
  }
  std::string Audio() const { return files_.At("data/1 Waltz.obd").string(); }
  std::string Ogg(int rate = kRate) const {
    sound_files::Write(Audio(), kVorbis, rate, 1, sound_files::Noise(kBars * rate, 1));
    return sound_files::Bytes(Audio());
  }
  void Give(const std::string& bytes) const { sound_files::WriteBytes(Audio(), bytes); }

  Ended Check() const { return Orbel({"check", files_.Show()}); }
  Ended Render(const std::string& song) const {
    std::filesystem::remove(Out());
    return Orbel({"render", files_.Show(), "-o", Out(), "--song", song});
  }
  std::string Out() const { return files_.Beside("out.wav"); }

  // The check says so, and the song is played as long as it is written.
  void ExpectPlaysWithAWarning(const std::string& words) const {
    const Ended check = Check();
    EXPECT_EQ(check.status, 0) << check.out;
    EXPECT_THAT(check.out, HasSubstr("warning: data/1 Waltz.obd"));
    EXPECT_THAT(check.out, HasSubstr(words));
    EXPECT_EQ(Render("1").status, 0);
    EXPECT_EQ(ReadFloatWav(Out()).size(), static_cast<std::size_t>(kBars * kRate));
  }
  // The check says so, the song is refused and leaves no file, and the other one plays.
  void ExpectRefused(const std::string& words) const {
    const Ended check = Check();
    EXPECT_EQ(check.status, 5);
    EXPECT_THAT(check.out, HasSubstr("data/1 Waltz.obd"));
    EXPECT_THAT(check.out, HasSubstr(words));
    const Ended run = Render("1");
    EXPECT_EQ(run.status, 1);
    ExpectEndedInWords(run);
    EXPECT_THAT(run.messages, HasSubstr("1 Waltz.obd"));
    EXPECT_THAT(run.messages, HasSubstr(words));
    EXPECT_FALSE(std::filesystem::exists(Out()));
    EXPECT_EQ(Render("2").status, 0);
    EXPECT_EQ(ReadFloatWav(Out()).size(), static_cast<std::size_t>(kRate));
  }

  ShowFiles files_;
};

TEST_F(DamagedAudio, CheckRenderAndPlaySayTheSameOfWhatIsCutOff) {
  sound_files::Write(Audio(), SF_FORMAT_AU | SF_FORMAT_PCM_16, kRate, 1,
                     sound_files::Noise(kBars * kRate, 1));
  const std::string song = sound_files::Bytes(Audio());
  Give(song.substr(0, song.size() / 2));
  const std::string words =
      "warning: data/1 Waltz.obd: the file is shorter than its header says: it was cut off; it plays like "
      "that, or export the recording again\n";
  EXPECT_THAT(Check().out, HasSubstr(words));
  EXPECT_THAT(Render("1").messages, HasSubstr(words));
  const Ended play = Orbel({"play", files_.Show(), "--output", "file", "--device", Out()});
  EXPECT_THAT(play.messages, HasSubstr(words));
}

// The library that decodes MP3 prints notes of its own.
TEST_F(DamagedAudio, OfMp3sNobodyReadsOtherWordsThanOurs) {
  sound_files::Write(Audio(), SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, kRate, 1,
                     sound_files::Noise(10 * kBars * kRate, 1));
  const std::string song = sound_files::Bytes(Audio());
  const std::size_t part = song.size() / 4;
  std::string hole = song;
  hole.replace(2 * part, part, part, '\0');
  std::string garbage = song;
  for (std::size_t i = 2 * part; i < 3 * part; ++i) garbage[i] = static_cast<char>(i * i >> 3);
  for (const std::string& damaged : {song.substr(0, 2 * part), hole, garbage}) {
    Give(damaged);
    const Ended check = Check();
    EXPECT_EQ(check.messages, "");
    EXPECT_THAT(check.out, HasSubstr("warning: data/1 Waltz.obd: "));
    EXPECT_THAT(check.out, testing::Not(HasSubstr("internal error")));
    const Ended play = Orbel({"play", files_.Show(), "--output", "file", "--device", Out()});
    for (const Ended& run : {Render("1"), play}) {
      EXPECT_EQ(run.status, 0) << run.messages;
      for (const char* theirs : {"mpg123", "Note:", "Warning:", "resync", "internal error"})
        EXPECT_THAT(run.messages, testing::Not(HasSubstr(theirs)));
    }
  }
}

TEST_F(DamagedAudio, TruncatedOggPlaysWithSilenceAtItsEnd) {
  const std::string song = Ogg();
  Give(song.substr(0, song.size() / 2));
  ExpectPlaysWithAWarning("is shorter than the song");
  const std::vector<float> heard = ReadFloatWav(Out());
  EXPECT_NE(heard[100], 0.0F);
  EXPECT_EQ(heard.back(), 0.0F);
}

TEST_F(DamagedAudio, OggDamagedInTheMiddlePlaysWithSilenceThere) {
  std::string song = Ogg();
  song.replace(song.size() / 2, song.size() / 8, song.size() / 8, '\0');
  Give(song);
  ExpectPlaysWithAWarning("frames are lost and silent");
}

TEST_F(DamagedAudio, ChainedOggWhoseRateChangesIsRefused) {
  const std::string second = Ogg(2 * kRate);
  Give(Ogg() + second);
  ExpectRefused("Keep one recording in each file");
}

// Neither the rate of the show, which the others would be blamed for, nor one to resample from.
TEST_F(DamagedAudio, OfARateThatCannotBePlayedIsRefusedAloneWhicheverSongItIs) {
  struct Odd {
    std::string number, name;
    int rate;
    std::string other;
  };
  for (const Odd& odd :
       {Odd{"1", "Waltz", 100, "2"}, {"1", "Waltz", 1'000'000, "2"}, {"2", "Polka", 900, "1"}}) {
    const std::string file = "data/" + odd.number + " " + odd.name + ".obd";
    const std::string good = sound_files::Bytes(files_.At(file));
    sound_files::Write(files_.At(file), SF_FORMAT_WAV | SF_FORMAT_PCM_16, odd.rate, 1,
                       sound_files::Noise(4'000, 1));
    const std::string words = file + ": it has " + std::to_string(odd.rate) +
                              " frames a second, and only 8000 to 384000 can be played. Export the recording "
                              "again at 48000 Hz";
    const std::string leftOut = words + ". Song " + odd.number + " is left out.\n";
    const Ended check = Check();
    EXPECT_EQ(check.status, 5);
    EXPECT_EQ(check.out,
              "error: " + words + ". The song is left out; replace the file\n1 error, no warnings\n");
    const Ended asked = Render(odd.number);
    EXPECT_EQ(asked.status, 1);
    EXPECT_THAT(asked.messages, HasSubstr(words));
    const Ended other = Render(odd.other);
    EXPECT_EQ(other.status, 0);
    EXPECT_THAT(other.messages, HasSubstr(leftOut));
    const Ended play = Orbel({"play", files_.Show(), "--output", "file", "--device", Out()});
    EXPECT_EQ(play.status, 0);
    EXPECT_THAT(play.messages, HasSubstr(leftOut));
    EXPECT_THAT(play.messages, HasSubstr("out.wav, 8000 Hz.\n"));
    sound_files::WriteBytes(files_.At(file), good);
  }
}

TEST_F(DamagedAudio, OfTheLeastAndTheMostFramesASecondPlays) {
  for (const int rate : {8'000, 384'000}) {
    sound_files::Write(Audio(), SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate, 1,
                       sound_files::Noise(kBars * rate, 1));
    EXPECT_EQ(Check().status, 0);
    EXPECT_EQ(Render("1").status, 0);
    EXPECT_EQ(ReadFloatWav(Out()).size(), static_cast<std::size_t>(kBars * rate));
  }
}

TEST_F(DamagedAudio, EmptyFile) {
  Give("");
  ExpectRefused("the file is empty");
}

TEST_F(DamagedAudio, WavWithoutData) {
  sound_files::Write(Audio(), SF_FORMAT_WAV | SF_FORMAT_PCM_16, kRate, 1, {});
  ExpectRefused("holds no audio");
}

TEST_F(DamagedAudio, NotANumberAndEnormousSamplesAreSilencedAndClipped) {
  std::vector<float> samples = host_tests::FramesFromZero(kBars * kRate);
  samples[100] = std::numeric_limits<float>::quiet_NaN();
  samples[101] = std::numeric_limits<float>::infinity();
  samples[102] = 1e30F;
  samples[103] = -1e30F;
  host_tests::WriteWav(Audio(), samples, kRate);
  EXPECT_THAT(Check().out, HasSubstr("2 samples that are not finite are replaced by 0"));
  ASSERT_EQ(Orbel({"render", files_.Show(), "-o", Out(), "--format", "pcm16"}).status, 0);
  const std::string wav = sound_files::Bytes(Out());
  const std::size_t data = wav.find("data") + 8;
  const auto sample = [&](std::size_t index) {
    return static_cast<short>(static_cast<unsigned char>(wav[data + 2 * index]) |
                              static_cast<unsigned char>(wav[data + 2 * index + 1]) << 8);
  };
  EXPECT_EQ(sample(100), 0);
  EXPECT_EQ(sample(101), 0);
  EXPECT_EQ(sample(102), 32767);
  EXPECT_EQ(sample(103), -32768);
}

TEST_F(DamagedAudio, CutAtEveryThousandthBytePlaysOrIsRefused) {
  const std::string song = Ogg();
  for (std::size_t length = 0; length < song.size(); length += 1000) {
    SCOPED_TRACE(length);
    Give(song.substr(0, length));
    const Ended run = Render("1");
    ExpectEndedInWords(run);
    EXPECT_THAT(run.messages, HasSubstr("1 Waltz.obd"));
    EXPECT_EQ(std::filesystem::exists(Out()), run.status == 0);
  }
}

TEST_F(DamagedAudio, FlacAndWavCutAtEveryThousandthByteArePlayedCheckedOrRefused) {
  for (const int format : {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, SF_FORMAT_WAV | SF_FORMAT_PCM_16}) {
    sound_files::Write(Audio(), format, kRate, 1, sound_files::Noise(kRate, 1));
    const std::string song = sound_files::Bytes(Audio());
    for (std::size_t length = 0; length < song.size(); length += 1000) {
      SCOPED_TRACE(length);
      Give(song.substr(0, length));
      const Ended check = Check();
      EXPECT_THAT(check.status, testing::AnyOf(0, 5));
      EXPECT_THAT(check.out, HasSubstr("data/1 Waltz.obd"));
      const Ended run = Render("1");
      ExpectEndedInWords(run);
      EXPECT_EQ(std::filesystem::exists(Out()), run.status == 0);
      EXPECT_EQ(check.status == 0, run.status == 0);
    }
  }
}

TEST_F(DamagedAudio, Of27HoursIsRefusedInWordsBeforeItCostsMemory) {
  const auto little = [](unsigned long long value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
    return text;
  };
  constexpr unsigned long long kBytes = 9'331'200'000ULL;
  Give("RF64\xFF\xFF\xFF\xFFWAVEds64" + little(28, 4) + little(kBytes + 72, 8) + little(kBytes, 8) +
       little(kBytes / 2, 8) + little(0, 4) + "fmt " + little(16, 4) + little(1, 2) + little(1, 2) +
       little(48000, 4) + little(96000, 4) + little(2, 2) + little(16, 2) + "data\xFF\xFF\xFF\xFF");
  std::filesystem::resize_file(Audio(), std::filesystem::file_size(Audio()) + kBytes);
  const Limit limit(RLIMIT_AS, 1'000'000'000);
  ExpectRefused("4665600000 frames are more than the 4294967295 that a song can have");
}

TEST_F(DamagedAudio, ThatIsAPipeIsNotWaitedFor) {
  std::filesystem::remove(Audio());
  ASSERT_EQ(::mkfifo(Audio().c_str(), 0600), 0);
  ExpectRefused("this is a pipe, not an audio file");
}

}  // namespace
}  // namespace faults
