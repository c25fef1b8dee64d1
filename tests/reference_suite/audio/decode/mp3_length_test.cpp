// MP3s that do not say how long they are, say it wrongly, or are several: all of it plays, or words say why
// not.
#include <gtest/gtest.h>

#include <algorithm>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/mp3_parts.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

using sound_files::BitRate;
using sound_files::MakeMp3;
using sound_files::Mp3Parts;
using test_support::ThrowsWithText;

constexpr long long kFrames = 100'000;

std::string Id3(std::size_t bytes, bool hasEnd = false) {
  std::string tag("ID3\x04\0", 5);
  tag += hasEnd ? '\x10' : '\0';
  for (int shift = 21; shift >= 0; shift -= 7) tag += static_cast<char>(bytes >> shift & 0x7F);
  // What looks like frames in it is none.
  while (tag.size() < 10 + bytes) tag += "\xFF\xFB\x90\x64";
  tag.resize(10 + bytes);
  return hasEnd ? tag + "3DI" + tag.substr(3, 7) : tag;
}

const std::string kId3v1 = "TAG" + std::string(125, 'x');

class Mp3Length : public testing::Test {
 protected:
  // What is heard, and what probing says of it beforehand.
  std::vector<float> Heard(const std::string& bytes, const std::string& warnings = "") const {
    sound_files::WriteBytes(path_, bytes);
    const test_support::CoutCapture console;
    const tesk_audio::AudioFileInfo info = tesk_audio::ProbeAudioFile(path_);
    const auto content = Decode(path_);
    EXPECT_EQ(info.frames, static_cast<long long>(content->GetSampleCount()));
    EXPECT_EQ(console.Text(), warnings.empty() ? "" : "WARNING: " + path_ + ": " + warnings + ".\n");
    return Samples(*content);
  }

  void ExpectRefused(const std::string& bytes, const std::string& text) const {
    sound_files::WriteBytes(path_, bytes);
    const std::string whole = path_ + ": " + text;
    EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>([&] { Decode(path_); }, whole));
    EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(
        [&] { tesk_audio::ProbeAudioFile(path_); }, whole));
  }

  Mp3Parts Song(int rateHz = 44'100, unsigned channels = 2, BitRate bitRate = BitRate::kVarying) const {
    return MakeMp3(path_, rateHz, channels, kFrames, bitRate);
  }

  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("1 Song.obd");
};

struct Kind {
  int rateHz;
  unsigned channels;
  BitRate bitRate;
};
void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.rateHz << " Hz, " << kind.channels << (kind.bitRate == BitRate::kSteady ? " steady" : "");
}

class Mp3WithoutALength : public Mp3Length, public testing::WithParamInterface<Kind> {
 protected:
  Mp3Parts Song_() const { return Song(GetParam().rateHz, GetParam().channels, GetParam().bitRate); }
};

// The frame that tells the length is the one that tells what to leave out in front: without it all is heard.
TEST_P(Mp3WithoutALength, PlaysEverySampleOfEveryFrame) {
  const Mp3Parts song = Song_();
  const unsigned channels = GetParam().channels;
  const std::vector<float> whole = Heard(song.Whole());
  ASSERT_EQ(whole.size(), kFrames * channels);
  const std::vector<float> heard = Heard(song.Music());
  ASSERT_EQ(heard.size(), static_cast<std::size_t>(song.Samples(GetParam().rateHz)) * channels);
  const auto from = heard.begin() + static_cast<std::ptrdiff_t>(song.addedInFront * channels);
  EXPECT_TRUE(std::equal(whole.begin(), whole.end(), from));
}

TEST_P(Mp3WithoutALength, PlaysTheSameBetweenTexts) {
  const Mp3Parts song = Song_();
  const std::vector<float> heard = Heard(song.Music());
  EXPECT_EQ(Heard(Id3(5'000) + song.Music()), heard);
  EXPECT_EQ(Heard(Id3(300, true) + Id3(20'000) + song.Music() + kId3v1), heard);
}

TEST_P(Mp3WithoutALength, PlaysTheWholeWhereTheCountIsWrong) {
  const Mp3Parts song = Song_();
  const std::vector<float> whole = Heard(song.Whole());
  const auto count = static_cast<std::uint32_t>(song.music.size());
  for (const std::uint32_t wrong : {0U, 1U, count / 2, count - 1}) {
    SCOPED_TRACE(wrong);
    EXPECT_EQ(Heard(song.WithCount(wrong)), whole);
    EXPECT_EQ(Heard(Id3(100'000) + song.WithCount(wrong) + kId3v1), whole);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Mp3WithoutALength,
    testing::Values(Kind{48'000, 2, BitRate::kVarying}, Kind{48'000, 2, BitRate::kSteady},
                    Kind{44'100, 1, BitRate::kVarying}, Kind{44'100, 2, BitRate::kSteady},
                    Kind{32'000, 2, BitRate::kVarying}, Kind{24'000, 2, BitRate::kVarying},
                    Kind{22'050, 1, BitRate::kVarying}, Kind{24'000, 2, BitRate::kSteady},
                    Kind{11'025, 2, BitRate::kVarying}, Kind{8'000, 1, BitRate::kVarying}));

TEST_F(Mp3Length, ATrueCountIsLeftAlone) {
  const Mp3Parts song = Song();
  const std::vector<float> whole = Heard(song.Whole());
  EXPECT_EQ(whole.size(), 2U * kFrames);
  EXPECT_EQ(Heard(song.Whole() + kId3v1), whole);
  EXPECT_EQ(Heard(Id3(70'000) + song.Whole()), whole);
}

TEST_F(Mp3Length, AFirstFrameOfTheOtherKindIsNoMusic) {
  const Mp3Parts song = Song();
  std::string first = song.tag;
  std::fill(first.begin() + 4, first.end(), '\0');
  first.replace(36, 4, "VBRI");
  EXPECT_EQ(Heard(first + song.Music()), Heard(song.Music()));
}

TEST_F(Mp3Length, TwoOfOneKindPlayAsOneAndThatIsTold) {
  const Mp3Parts song = Song();
  const std::vector<float> whole = Heard(song.Whole());
  // Between them is what the encoder filled up the first one with, the frame that tells the length of the
  // second and what was added in front of it: as much as is left out in front of the first.
  const auto second = 2 * static_cast<std::ptrdiff_t>(song.Samples(44'100) + 1152);
  for (const std::string& between : {std::string(), kId3v1, Id3(3'000), kId3v1 + Id3(3'000)}) {
    const std::vector<float> heard =
        Heard(song.Whole() + between + song.Whole(),
              "several MP3s follow each other in this file; they are played as one");
    ASSERT_GE(heard.size(), static_cast<std::size_t>(second) + whole.size());
    EXPECT_TRUE(std::equal(whole.begin(), whole.end(), heard.begin()));
    // Where it begins decides how the library rounds.
    for (std::size_t i = 4 * 1152; i < whole.size(); ++i) {
      ASSERT_NEAR(whole[i], heard[static_cast<std::size_t>(second) + i], 1e-6F) << i;
    }
  }
}

TEST_F(Mp3Length, OfTwoThatDoNotFitTogetherNoneIsPlayed) {
  const Mp3Parts song = Song();
  const Mp3Parts faster = Song(48'000);
  const Mp3Parts slower = Song(22'050);
  const Mp3Parts mono = Song(44'100, 1);
  const std::string start = "this is a chain of MP3s, and the ";
  const std::string end = ". Keep one recording in each file.";
  for (const bool isBare : {false, true}) {
    const auto bytes = [isBare](const Mp3Parts& parts) { return isBare ? parts.Music() : parts.Whole(); };
    ExpectRefused(bytes(song) + bytes(faster), start + "rate changes inside, from 44100 to 48000 Hz" + end);
    ExpectRefused(bytes(song) + kId3v1 + Id3(500) + bytes(slower),
                  start + "rate changes inside, from 44100 to 22050 Hz" + end);
    ExpectRefused(bytes(song) + bytes(mono), start + "channels change inside, from 2 to 1" + end);
    ExpectRefused(bytes(mono) + bytes(song), start + "channels change inside, from 1 to 2" + end);
  }
}

// A damaged header is no second recording.
TEST_F(Mp3Length, OneFrameOfAnotherKindIsDamageAndNoReasonToRefuse) {
  Mp3Parts song = Song();
  song.music.at(20)[3] = static_cast<char>(song.music.at(20)[3] | 0xC0);
  sound_files::WriteBytes(path_, song.Whole());
  const test_support::CoutCapture console;
  EXPECT_GT(Decode(path_)->GetSampleCount(), 18U * 1152);
  EXPECT_NE(console.Text(), "");
}

TEST_F(Mp3Length, AGapInOneWithoutALengthIsTold) {
  const Mp3Parts song = Song();
  std::string bytes;
  for (std::size_t frame = 0; frame < song.music.size(); ++frame) {
    bytes += frame == 40 ? std::string(300, '\0') : song.music.at(frame);
  }
  const std::vector<float> heard =
      Heard(bytes, "the MP3 is damaged; what follows the damage comes too early");
  EXPECT_EQ(heard.size(), 2U * static_cast<std::size_t>(song.Samples(44'100) - 1152));
}

TEST_F(Mp3Length, AHoleInOneWithoutALengthTellsFromWhereOnItIsSilent) {
  const Mp3Parts song = Song();
  std::string bytes = song.Music();
  sound_files::WriteBytes(path_, bytes.replace(bytes.size() / 2, 5'000, 5'000, '\0'));
  const test_support::CoutCapture console;
  Decode(path_);
  EXPECT_NE(console.Text().find(": damaged from 0:01."), std::string::npos) << console.Text();
}

TEST_F(Mp3Length, WhatIsCutOffIsStillCountedAgainstTheLengthThatItTells) {
  const Mp3Parts song = Song();
  const std::string whole = song.Whole();
  sound_files::WriteBytes(path_, whole.substr(0, whole.size() / 2));
  const test_support::CoutCapture console;
  const auto content = Decode(path_);
  EXPECT_LT(content->GetSampleCount(), kFrames);
  EXPECT_EQ(console.Text(), "WARNING: " + path_ + ": only " + std::to_string(content->GetSampleCount()) +
                                " of 100000 frames could be decoded.\n");
}

TEST_F(Mp3Length, OneThatCannotBeIsNotBelieved) {
  const Mp3Parts song = Song();
  const std::vector<float> whole = Heard(song.Whole());
  for (const std::uint32_t count : {9'500U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_EQ(Heard(song.WithCount(count), "the file is shorter than its header says: it was cut off"), whole)
        << count;
  }
}

}  // namespace
