// Files that are broken: refused in words, or played as far as they go with a warning.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

using tesk_audio::AudioSampleContentError;

constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
constexpr int kAiff16 = SF_FORMAT_AIFF | SF_FORMAT_PCM_16;
constexpr int kWavFloat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
constexpr int kFlac = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
constexpr int kMp3 = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;

class DamagedFiles : public testing::Test {
 protected:
  // A real file's bytes.
  std::string Song(int format, long long frames = 144'000) const {
    sound_files::Write(path_, format, 48000, 2, sound_files::Noise(frames, 2));
    return sound_files::Bytes(path_);
  }

  void Damage(const std::string& bytes) const { sound_files::WriteBytes(path_, bytes); }

  // Decoding and probing refuse alike.
  void ExpectRefused(const std::string& bytes, const std::string& text) const {
    Damage(bytes);
    EXPECT_TRUE(ThrowsWithText<AudioSampleContentError>([&] { Decode(path_); }, path_ + ": " + text));
    EXPECT_TRUE(ThrowsWithText<AudioSampleContentError>([&] { tesk_audio::ProbeAudioFile(path_); },
                                                        path_ + ": " + text));
  }

  void ExpectPlaysWithWarning(const std::string& bytes, unsigned frames, const std::string& warnings) const {
    Damage(bytes);
    const test_support::CoutCapture console;
    EXPECT_EQ(Decode(path_)->GetSampleCount(), frames);
    EXPECT_EQ(console.Text(), warnings);
  }

  // Of a compressed file cut in half nobody knows how many frames the half holds.
  void ExpectPlaysAboutHalf(const std::string& song) const {
    Damage(song.substr(0, song.size() / 2));
    const test_support::CoutCapture console;
    const auto content = Decode(path_);
    EXPECT_GT(content->GetSampleCount(), 60'000U);
    EXPECT_LT(content->GetSampleCount(), 75'000U);
    EXPECT_EQ(console.Text(), Warning("only " + std::to_string(content->GetSampleCount()) +
                                      " of 144000 frames could be decoded"));
  }

  void ExpectPlaysOrIsRefused() const {
    const test_support::CoutCapture console;
    try {
      EXPECT_GT(Decode(path_)->GetSampleCount(), 0U);
    } catch (const AudioSampleContentError&) {
    } catch (const tesk_audio::OggVorbisDecodeError&) {
    }
  }

  // A whole song whose header says another size, of the file and of its samples.
  void ExpectPromises(int format, std::uint32_t size, const std::string& warnings) const {
    SCOPED_TRACE(size);
    std::string song = Song(format, 1'000);
    const bool isBig = (format & SF_FORMAT_TYPEMASK) == SF_FORMAT_AIFF;
    const auto put = [&](std::size_t at, std::uint32_t value) {
      for (std::size_t i = 0; i < 4; ++i)
        song[at + i] = static_cast<char>(value >> 8 * (isBig ? 3 - i : i) & 0xFF);
    };
    put(4, size);
    const std::size_t samplesAt = song.find(isBig ? "SSND" : "data") + 4;
    put(samplesAt, size - static_cast<std::uint32_t>(samplesAt - 4));
    ExpectPlaysWithWarning(song, 1'000, warnings);
  }

  std::string Warning(const std::string& text) const { return "WARNING: " + path_ + ": " + text + ".\n"; }

  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("1 Song.obd");
};

const char* const kNotAudio =
    "this is not audio that can be decoded. Use Ogg Vorbis, Ogg Opus, FLAC, WAV, AIFF or MP3.";
const char* const kWavHeader =
    "the WAV file cannot be decoded: its header is damaged, cut off or of an unknown kind. Export the "
    "recording again.";
const char* const kWavWithoutAudio =
    "the WAV file holds no audio: not one frame could be decoded. Export the recording again.";

TEST_F(DamagedFiles, EmptyFile) {
  ExpectRefused("", "the file is empty. Copy it again from where it came.");
}

TEST_F(DamagedFiles, ZerosAndText) {
  ExpectRefused(std::string(5000, '\0'), kNotAudio);
  ExpectRefused("Dear diary, today I wrote no music.\n", kNotAudio);
}

TEST_F(DamagedFiles, WavWithoutData) {
  ExpectRefused(Song(kWav16, 0), kWavWithoutAudio);
}

TEST_F(DamagedFiles, WavWithABrokenHeader) {
  const std::string song = Song(kWav16);
  ExpectRefused(song.substr(0, 30), kWavHeader);
  std::string noRate = song;
  noRate.replace(24, 4, 4, '\0');
  ExpectRefused(noRate, kWavHeader);
  std::string noChannels = song;
  noChannels.replace(22, 2, 2, '\0');
  ExpectRefused(noChannels, kWavHeader);
  std::string manyChannels = song;
  manyChannels.replace(22, 2, "\x01\x04");  // 1025
  ExpectRefused(manyChannels, kWavHeader);
  std::string unknownKind = song;
  unknownKind.replace(20, 2, "\x34\x12");
  ExpectRefused(unknownKind, kWavHeader);
}

TEST_F(DamagedFiles, CutOffInsideItsHeader) {
  const std::string song = Song(kWav16);
  for (std::size_t length = 1; length < 12; ++length) ExpectRefused(song.substr(0, length), kNotAudio);
  for (std::size_t length = 12; length < 41; ++length) ExpectRefused(song.substr(0, length), kWavHeader);
}

TEST_F(DamagedFiles, WavCutInHalfPlaysItsHalf) {
  const std::string song = Song(kWav16);
  ExpectPlaysWithWarning(song.substr(0, song.size() / 2), 71'994,
                         Warning("the file is shorter than its header says: it was cut off"));
}

// What a recorder that was switched off leaves behind: the most that fits, or nothing.
TEST_F(DamagedFiles, WavWhoseLengthWasNeverWrittenPlaysCompletelyUnlessItSaysThatThereIsNoAudio) {
  const auto withLength = [this](char byte) {
    return Song(kWav16).replace(4, 4, 4, byte).replace(40, 4, 4, byte);
  };
  ExpectPlaysWithWarning(withLength('\xFF'), 144'000, "");
  ExpectRefused(withLength('\0'), kWavWithoutAudio);
}

TEST_F(DamagedFiles, AiffCutInHalfPlaysItsHalf) {
  const std::string song = Song(SF_FORMAT_AIFF | SF_FORMAT_PCM_24);
  ExpectPlaysWithWarning(song.substr(0, song.size() / 2), 71'995,
                         Warning("the file is shorter than its header says: it was cut off"));
}

TEST_F(DamagedFiles, Rf64W64AndAuCutInHalfPlayTheirHalf) {
  struct Cut {
    int format;
    unsigned frames;
  };
  for (const Cut& cut : {Cut{SF_FORMAT_RF64, 71'987}, Cut{SF_FORMAT_W64, 71'987}, Cut{SF_FORMAT_AU, 71'997},
                         Cut{SF_FORMAT_AU | SF_ENDIAN_LITTLE, 71'997}}) {
    const std::string song = Song(cut.format | SF_FORMAT_PCM_16);
    ExpectPlaysWithWarning(song, 144'000, "");
    ExpectPlaysWithWarning(song.substr(0, song.size() / 2), cut.frames,
                           Warning("the file is shorter than its header says: it was cut off"));
    ExpectPlaysWithWarning(song.substr(0, song.size() - 4), 143'999,
                           Warning("the file is shorter than its header says: it was cut off"));
  }
}

TEST_F(DamagedFiles, Rf64W64AndAuWhoseLengthWasNeverWrittenPlayCompletely) {
  const std::string rf64 = Song(SF_FORMAT_RF64 | SF_FORMAT_PCM_16);
  ExpectPlaysWithWarning(std::string(rf64).replace(20, 8, 8, '\xFF'), 144'000, "");
  ExpectPlaysWithWarning(std::string(rf64).replace(20, 8, 8, '\0'), 144'000, "");
  const std::string w64 = Song(SF_FORMAT_W64 | SF_FORMAT_PCM_16);
  ExpectPlaysWithWarning(std::string(w64).replace(16, 8, 8, '\xFF'), 144'000, "");
  const std::string au = Song(SF_FORMAT_AU | SF_FORMAT_PCM_16);
  ExpectPlaysWithWarning(std::string(au).replace(8, 4, 4, '\xFF'), 144'000, "");
}

TEST_F(DamagedFiles, FilesOfGigabytesThatAreCutOffAreToldOf) {
  for (const std::uint32_t size :
       {0x7EFEFFFFU, 0x7F010001U, 0x7FFEFFFFU, 0x80010001U, 0xC0000000U, 0xFFFEFFFFU}) {
    for (const int format : {kWav16, kAiff16})
      ExpectPromises(format, size, Warning("the file is shorter than its header says: it was cut off"));
  }
}

// What programs write that stream a recording and cannot go back to its header.
TEST_F(DamagedFiles, RoundSizesOfFilesThatWereStreamedPromiseNothing) {
  for (const std::uint32_t size :
       {0x7F000000U, 0x7F000050U, 0x7FFF0024U, 0x7FFFF024U, 0x7FFFFF24U, 0x7FFFFFFFU, 0x80000023U,
        0x80000024U, 0xFFFF0024U, 0xFFFFFFF7U, 0xFFFFFFFFU}) {
    for (const int format : {kWav16, kAiff16}) ExpectPromises(format, size, "");
  }
}

TEST_F(DamagedFiles, CafCutInHalfIsRefused) {
  const std::string song = Song(SF_FORMAT_CAF | SF_FORMAT_PCM_16);
  ExpectPlaysWithWarning(song, 144'000, "");
  ExpectRefused(
      song.substr(0, song.size() / 2),
      "the CAF file cannot be decoded: its header is damaged, cut off or of an unknown kind. Export "
      "the recording again.");
}

// Of a file that promises too much it does not matter how much of it is there.
TEST_F(DamagedFiles, Rf64AndW64ThatPromiseMoreThanASongCanHave) {
  struct Kind {
    int format;
    std::size_t sizeAt;
    std::uint64_t sizeOfHeader;  // counted in the size
  };
  for (const Kind& kind : {Kind{SF_FORMAT_RF64, 28, 0}, Kind{SF_FORMAT_W64, 40 + 40 + 16, 24}}) {
    const auto promising = [&](std::uint64_t frames) {
      std::string song = Song(kind.format | SF_FORMAT_PCM_16);
      const std::uint64_t size = frames * 4 + kind.sizeOfHeader;
      for (std::size_t i = 0; i < 8; ++i) song[kind.sizeAt + i] = static_cast<char>(size >> (8 * i) & 0xFF);
      return song;
    };
    ExpectRefused(
        promising(4'294'967'296),
        "4294967296 frames are more than the 4294967295 that a song can have. Split the recording.");
    ExpectRefused(promising(1'000'000'000'000'000),
                  "1000000000000000 frames are more than the 4294967295 that a song can have. Split the "
                  "recording.");
    ExpectPlaysWithWarning(promising(4'294'967'295), 144'000,
                           Warning("the file is shorter than its header says: it was cut off"));
  }
}

// The promise stands behind whatever else a program has written there.
TEST_F(DamagedFiles, W64ThatPromisesTooMuchBehindAnotherChunk) {
  std::string song = Song(SF_FORMAT_W64 | SF_FORMAT_PCM_16);
  const std::size_t dataAt = 40 + 40;
  song.replace(dataAt + 16, 8, std::string("\x18\0\0\0\x04\0\0\0", 8));  // 2 ^ 34 bytes and the header
  const std::string kind("junk\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 16);
  song.insert(dataAt, kind + std::string("\x1B\0\0\0\0\0\0\0", 8) + std::string(8, 'x'));
  ExpectRefused(song,
                "4294967296 frames are more than the 4294967295 that a song can have. Split the recording.");
}

TEST_F(DamagedFiles, FlacCutInHalfPlaysItsHalf) {
  ExpectPlaysAboutHalf(Song(kFlac));
}

TEST_F(DamagedFiles, FlacWithoutAWholeFrame) {
  ExpectRefused(Song(kFlac).substr(0, 100),
                "the FLAC file holds no audio: not one frame could be decoded. Export the recording again.");
  ExpectRefused(
      Song(kFlac).substr(0, 30),
      "the FLAC file cannot be decoded: its header is damaged, cut off or of an unknown kind. Export the "
      "recording again.");
}

TEST_F(DamagedFiles, FlacThatDoesNotKnowItsLengthPlaysCompletely) {
  std::string song = Song(kFlac);
  // The 36 bits of the length, behind rate, channels and depth.
  song[21] = static_cast<char>(song[21] & 0xF0);
  song.replace(22, 4, 4, '\0');
  ExpectPlaysWithWarning(song, 144'000, "");
}

TEST_F(DamagedFiles, FlacThatPromisesMoreThanASongCanHave) {
  std::string song = Song(kFlac);
  song[21] = static_cast<char>(song[21] | 0x0F);
  song.replace(22, 4, 4, '\xFF');
  ExpectRefused(song,
                "68719476735 frames are more than the 4294967295 that a song can have. Split the recording.");
}

TEST_F(DamagedFiles, Mp3CutInHalfPlaysItsHalf) {
  ExpectPlaysAboutHalf(Song(kMp3));
}

TEST_F(DamagedFiles, Mp3WithAHoleTellsFromWhereOnItIsSilent) {
  const std::string song = Song(kMp3);
  for (const std::size_t eighths : {1, 4, 6}) {
    Damage(std::string(song).replace(song.size() * eighths / 8, song.size() / 8, song.size() / 8, '\0'));
    const test_support::CoutCapture console;
    const long long frames = Decode(path_)->GetSampleCount();
    const long long milliseconds = (frames + 24) / 48;
    const std::string digits = std::to_string(1000 + milliseconds % 1000).substr(1);
    EXPECT_EQ(console.Text(), Warning("damaged from 0:0" + std::to_string(milliseconds / 1000) + "." +
                                      digits + " on; what follows is silence"));
  }
}

TEST_F(DamagedFiles, LongMp3WithAHoleTellsItInMinutes) {
  std::string song = Song(kMp3, 70 * 48'000);
  Damage(song.replace(song.size() * 7 / 8, song.size() / 16, song.size() / 16, '\0'));
  const test_support::CoutCapture console;
  Decode(path_);
  EXPECT_THAT(console.Text(), testing::HasSubstr(": damaged from 1:01."));
}

TEST_F(DamagedFiles, Mp3WithAHolePlaysWhatStandsBeforeIt) {
  const std::string song = Song(kMp3);
  for (const std::size_t eighths : {1, 4, 6}) {
    SCOPED_TRACE(eighths);
    const std::size_t at = song.size() * eighths / 8;
    Damage(song);
    const std::vector<float> whole = Samples(*Decode(path_));
    Damage(std::string(song).replace(at, song.size() / 8, song.size() / 8, '\0'));
    const test_support::CoutCapture console;
    const std::vector<float> heard = Samples(*Decode(path_));
    // The last frames before the hole need what lay in it.
    const std::size_t before = 2 * 144'000 * eighths / 8;
    EXPECT_GT(heard.size(), before - 2 * 5 * 1152);
    ASSERT_LT(heard.size(), before + 2 * 5 * 1152);
    const std::size_t sound = heard.size() - 2 * 5 * 1152;
    EXPECT_TRUE(std::equal(heard.begin(), heard.begin() + static_cast<std::ptrdiff_t>(sound), whole.begin()));
  }
}

TEST_F(DamagedFiles, NotANumberAndInfinitiesBecomeSilence) {
  std::vector<float> samples = sound_files::IndexCoded(10'000, 2);
  const float infinity = std::numeric_limits<float>::infinity();
  samples[5] = std::numeric_limits<float>::quiet_NaN();
  samples[6'000] = infinity;
  samples[19'999] = -infinity;
  samples[7] = 1e30F;
  samples[8] = -1e30F;
  sound_files::Write(path_, kWavFloat, 48000, 2, samples);
  const test_support::CoutCapture console;
  const std::vector<float> heard = Samples(*Decode(path_));
  samples[5] = samples[6'000] = samples[19'999] = 0.0F;
  EXPECT_EQ(heard, samples);
  EXPECT_EQ(console.Text(), Warning("3 samples that are not finite are replaced by 0"));
}

// The song whose rate is the show's is played at it, and the rest is resampled to it.
TEST_F(DamagedFiles, RatesThatNoShowCanHaveAreRefusedAndTheEndsOfTheRangePlay) {
  const auto refusal = [](const std::string& rate) {
    return "it has " + rate +
           " frames a second, and only 8000 to 384000 can be played. Export the recording again at 48000 Hz.";
  };
  for (const int rate : {1, 100, 900, 7'999, 384'001, 1'000'000, 2'147'483'647}) {
    sound_files::Write(path_, kWav16, rate, 1, sound_files::Noise(1'000, 1));
    ExpectRefused(sound_files::Bytes(path_), refusal(std::to_string(rate)));
    EXPECT_TRUE(ThrowsWithText<AudioSampleContentError>([&] { Decode(path_, "rate=48000"); },
                                                        path_ + ": " + refusal(std::to_string(rate))));
  }
  sound_files::Write(path_, SF_FORMAT_OGG | SF_FORMAT_VORBIS, 7'999, 1, sound_files::Noise(1'000, 1));
  EXPECT_TRUE(ThrowsWithText<tesk_audio::OggVorbisDecodeError>([&] { Decode(path_); },
                                                               path_ + ": " + refusal("7999")));
  for (const int rate : {8'000, 384'000}) {
    sound_files::Write(path_, kWav16, rate, 1, sound_files::Noise(1'000, 1));
    ExpectPlaysWithWarning(sound_files::Bytes(path_), 1'000, "");
    EXPECT_EQ(tesk_audio::ProbeAudioFile(path_).sampleRateHz, rate);
  }
}

TEST_F(DamagedFiles, RecordingOf27Hours) {
  // A header, and behind it a hole of 9.3 GB: 4 665 600 000 frames of 16 bits.
  const std::uint64_t dataBytes = 9'331'200'000ULL;
  const auto little = [](std::uint64_t value, std::size_t bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
    return text;
  };
  const std::string none(4, '\xFF');
  Damage("RF64" + none + "WAVEds64" + little(28, 4) + little(dataBytes + 72, 8) + little(dataBytes, 8) +
         little(dataBytes / 2, 8) + little(0, 4) + "fmt " + little(16, 4) + little(1, 2) + little(1, 2) +
         little(48000, 4) + little(96000, 4) + little(2, 2) + little(16, 2) + "data" + none);
  std::filesystem::resize_file(path_, std::filesystem::file_size(path_) + dataBytes);
  const std::string text =
      path_ + ": 4665600000 frames are more than the 4294967295 that a song can have. Split the recording.";
  EXPECT_TRUE(ThrowsWithText<AudioSampleContentError>([&] { Decode(path_); }, text));
  EXPECT_TRUE(ThrowsWithText<AudioSampleContentError>([&] { tesk_audio::ProbeAudioFile(path_); }, text));
}

TEST_F(DamagedFiles, EveryCutOfASmallFileIsSurvived) {
  for (const int format :
       {kWav16, kFlac, kMp3, SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_OGG | SF_FORMAT_OPUS}) {
    const std::string song = Song(format, 3'000);
    const std::size_t step = std::max<std::size_t>(1, song.size() / 150);
    for (std::size_t length = 0; length < song.size(); length += step) {
      Damage(song.substr(0, length));
      ExpectPlaysOrIsRefused();
    }
  }
}

TEST_F(DamagedFiles, EveryBrokenByteOfASmallFileIsSurvived) {
  for (const int format :
       {kWav16, kFlac, kMp3, SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_OGG | SF_FORMAT_OPUS}) {
    const std::string song = Song(format, 3'000);
    const std::size_t step = std::max<std::size_t>(1, song.size() / 150);
    for (std::size_t at = 0; at < song.size(); at += step) {
      std::string broken = song;
      broken[at] = static_cast<char>(broken[at] ^ 0x5A);
      Damage(broken);
      ExpectPlaysOrIsRefused();
    }
  }
}

}  // namespace
