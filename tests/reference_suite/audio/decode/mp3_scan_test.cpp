// The walk over the frames of MP3s, and over bytes that are none.
#include "reference_suite/audio/decode/mp3_scan.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "tests/reference_suite/audio/support/file_calls.h"
#include "tests/reference_suite/audio/support/mp3_parts.h"
#include "tests/reference_suite/audio/support/sound_files.h"

namespace {

using sound_files::MakeMp3;
using sound_files::Mp3Parts;
using tesk_audio::Mp3Scan;

class Mp3Scans : public testing::Test {
 protected:
  Mp3Scan Scan(const std::string& bytes) const {
    sound_files::WriteBytes(path_, bytes);
    tesk_audio::AudioFile file(path_);
    return tesk_audio::ScanMp3(file);
  }

  // What holds for every bytes.
  void ExpectSound(const Mp3Scan& scan, std::size_t bytes) const {
    if (!scan.format.has_value()) {
      EXPECT_EQ(scan.frames, 0);
      return;
    }
    EXPECT_GE(scan.frames, 1);
    // The shortest frame there is.
    EXPECT_LE(scan.start + scan.frames * 24, static_cast<long long>(bytes));
    EXPECT_LE(scan.tagsInside, scan.frames);
    EXPECT_TRUE(tesk_audio::ReadMpegHeader(scan.header.data())->SameFormat(*scan.format));
    EXPECT_TRUE(scan.encoder.empty() || scan.encoder.size() == 36);
  }

  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("song");
};

TEST_F(Mp3Scans, CountsTheFramesWithMusic) {
  const Mp3Parts song = MakeMp3(path_, 44'100, 2, 50'000);
  const auto count = static_cast<long long>(song.music.size());
  const Mp3Scan scan = Scan(song.Whole());
  ASSERT_TRUE(scan.format.has_value());
  EXPECT_EQ(scan.format->rateHz, 44'100);
  EXPECT_EQ(scan.format->channels, 2U);
  EXPECT_EQ(scan.start, static_cast<long long>(song.tag.size()));
  EXPECT_EQ(scan.frames, count);
  EXPECT_TRUE(scan.isTagged);
  EXPECT_FALSE(scan.isVbri);
  EXPECT_EQ(scan.taggedFrames, count);
  EXPECT_EQ(scan.encoder, song.tag.substr(song.countAt + 112, 36));
  EXPECT_EQ(scan.tagsInside, 0);
  EXPECT_FALSE(scan.hasGaps);
  EXPECT_FALSE(scan.change.has_value());
  EXPECT_EQ(Scan(song.Music()).frames, count);
  EXPECT_FALSE(Scan(song.Music()).isTagged);
}

TEST_F(Mp3Scans, ACutAtAnyByteLeavesTheFramesThatAreWhole) {
  const Mp3Parts song = MakeMp3(path_, 8'000, 1, 4'000);
  const std::string bytes = song.Whole();
  std::size_t whole = 0;
  std::size_t end = song.tag.size();
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    while (whole < song.music.size() && end + song.music[whole].size() <= length)
      end += song.music[whole++].size();
    const Mp3Scan scan = Scan(bytes.substr(0, length));
    ExpectSound(scan, length);
    // One frame alone is only one where the file ends with it, or the next begins.
    if (whole == 1 && length > end && length < end + 4) continue;
    EXPECT_EQ(scan.frames, static_cast<long long>(whole)) << length;
  }
  ASSERT_EQ(whole, song.music.size());
}

TEST_F(Mp3Scans, ADamagedHeaderAtTheEndIsNoChange) {
  for (const std::size_t fromEnd : {1U, 2U}) {
    Mp3Parts song = MakeMp3(path_, 44'100, 2, 50'000);
    std::string& frame = song.music[song.music.size() - fromEnd];
    frame[3] = static_cast<char>(frame[3] | 0xC0);
    EXPECT_FALSE(Scan(song.Whole()).change.has_value()) << fromEnd;
  }
}

// A disk that fails is asked for seconds each time.
TEST_F(Mp3Scans, WhereNothingCanBeReadNothingIsTriedAgain) {
  constexpr std::size_t kLost = 1'000'000;
  const Mp3Parts song = MakeMp3(path_, 44'100, 2, 50'000);
  sound_files::WriteBytes(path_, song.Whole() + std::string(kLost, '\0'));
  tesk_audio::AudioFile file(path_);
  std::filesystem::resize_file(path_, song.Whole().size());
  file_calls::Reset();
  EXPECT_EQ(tesk_audio::ScanMp3(file).frames, static_cast<long long>(song.music.size()));
  EXPECT_GT(file_calls::readCount, 0);
  EXPECT_LT(file_calls::readCount, 100);
}

TEST_F(Mp3Scans, TextsBehindTheMusicAreNoFrames) {
  const Mp3Parts song = MakeMp3(path_, 44'100, 2, 20'000);
  const std::string id3v1 = "TAG" + std::string(125, '\xFF');
  const std::string cut = song.Whole().substr(0, song.Whole().size() - 10);
  // Its end says how long it is, without what stands in front of it.
  const std::string apeText = std::string(100, '\xFF');
  const std::string apeEnd =
      "APETAGEX" + std::string("\xD0\x07\0\0\x84\0\0\0\x01\0\0\0\0\0\0\x80", 16) + std::string(8, '\0');
  const std::string ape = apeEnd + apeText + apeEnd;
  for (const std::string& behind : {id3v1, ape, ape + id3v1}) {
    EXPECT_EQ(Scan(song.Whole() + behind).frames, static_cast<long long>(song.music.size()));
    // Nor are they the rest of a frame that was cut off.
    EXPECT_EQ(Scan(cut + behind).frames, static_cast<long long>(song.music.size() - 1));
  }
}

TEST_F(Mp3Scans, ATagThatIsLongerThanTheFileHidesNothing) {
  const Mp3Parts song = MakeMp3(path_, 44'100, 2, 20'000);
  const std::string tag("ID3\x04\0\0\x7F\x7F\x7F\x7F", 10);
  EXPECT_EQ(Scan(tag + song.Whole()).frames, static_cast<long long>(song.music.size()));
  EXPECT_EQ(Scan(song.Whole() + tag + song.Music()).frames, 2 * static_cast<long long>(song.music.size()));
}

TEST_F(Mp3Scans, RandomBytesAreSurvived) {
  std::mt19937 random(20);  // NOLINT(cert-msc51-cpp): the same every time
  for (int run = 0; run < 300; ++run) {
    std::string bytes(random() % 20'000, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    ExpectSound(Scan(bytes), bytes.size());
  }
}

// Bytes of what the walk looks for, in any order.
TEST_F(Mp3Scans, ShuffledPiecesOfMp3sAreSurvived) {
  std::mt19937 random(21);  // NOLINT(cert-msc51-cpp): the same every time
  const std::vector<std::string> pieces = {"ID3",
                                           "TAG",
                                           "Xing",
                                           "Info",
                                           "VBRI",
                                           "APETAGEX",
                                           std::string(4, '\x7F'),
                                           std::string(32, '\0'),
                                           std::string(200, '\xFF'),
                                           "\xFF\xFB\x90\x64",
                                           "\xFF\xFB\xE0\xC4",
                                           "\xFF\xF3\x10\x44",
                                           "\xFF\xE3\x14\xC4",
                                           std::string("\xFF\xFB\x90\x64", 4) + std::string(413, '\0'),
                                           std::string("\0\0\0\x0F", 4)};
  for (int run = 0; run < 2'000; ++run) {
    std::string bytes;
    for (auto count = random() % 60; count > 0; --count) bytes += pieces[random() % pieces.size()];
    ExpectSound(Scan(bytes), bytes.size());
  }
}

TEST_F(Mp3Scans, BrokenBytesOfAnMp3AreSurvived) {
  std::mt19937 random(22);  // NOLINT(cert-msc51-cpp): the same every time
  const std::string whole = MakeMp3(path_, 44'100, 2, 20'000).Whole();
  for (int run = 0; run < 500; ++run) {
    std::string bytes = whole;
    for (unsigned count = 1U << random() % 8; count > 0; --count)
      bytes[random() % bytes.size()] = static_cast<char>(random());
    ExpectSound(Scan(bytes), bytes.size());
  }
}

// Longer than what is looked at in one piece.
TEST_F(Mp3Scans, FindsTheMusicBehindLongTextsAndLongJunk) {
  const Mp3Parts song = MakeMp3(path_, 44'100, 2, 200'000);
  const auto count = static_cast<long long>(song.music.size());
  std::string tag("ID3\x04\0\0\0\x10\0\0", 10);  // 2 ^ 18 bytes
  tag += std::string(1U << 18, '\xFF');
  EXPECT_EQ(Scan(tag + song.Whole()).frames, count);
  for (const std::size_t junk : {1U, 8'191U, 65'536U, 300'001U}) {
    const Mp3Scan scan = Scan(song.Music() + std::string(junk, '\0') + song.Music());
    EXPECT_EQ(scan.frames, 2 * count) << junk;
    EXPECT_TRUE(scan.hasGaps);
  }
}

}  // namespace
