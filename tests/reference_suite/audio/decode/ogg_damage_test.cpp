// Ogg streams that are cut, chained or have lost pages. What lies behind the damage must come at its own
// time.
#include <gtest/gtest.h>
#include <ogg/ogg.h>
#include <sndfile.h>

#include <algorithm>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

using tesk_audio::OggVorbisDecodeError;

constexpr int kVorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
constexpr int kOpus = SF_FORMAT_OGG | SF_FORMAT_OPUS;
constexpr unsigned kFrames = 144'000;

class OggDamage : public testing::Test {
 protected:
  std::string Song(int format, int rateHz = 48000, unsigned channels = 2, unsigned seed = 1) const {
    sound_files::Write(path_, format, rateHz, channels, sound_files::Noise(kFrames, channels, seed));
    return sound_files::Bytes(path_);
  }

  std::vector<float> Heard(const std::string& bytes) const {
    sound_files::WriteBytes(path_, bytes);
    return Samples(*Decode(path_));
  }

  void ExpectRefused(const std::string& bytes, const std::string& text) const {
    sound_files::WriteBytes(path_, bytes);
    EXPECT_TRUE(ThrowsWithText<OggVorbisDecodeError>([&] { Decode(path_); }, path_ + ": " + text));
  }

  void ExpectProbeRefuses(const std::string& text) const {
    EXPECT_TRUE(ThrowsWithText<OggVorbisDecodeError>([&] { tesk_audio::ProbeAudioFile(path_); },
                                                     path_ + ": " + text));
  }

  std::string Warning(const std::string& text) const { return "WARNING: " + path_ + ": " + text + ".\n"; }

  // The frames of the two that differ: the first, and one behind the last.
  static std::pair<std::size_t, std::size_t> Difference(const std::vector<float>& a,
                                                        const std::vector<float>& b) {
    std::size_t first = 0;
    while (first < a.size() && a[first] == b[first]) ++first;
    std::size_t last = a.size();
    while (last > first && a[last - 1] == b[last - 1]) --last;
    return {first / 2, (last + 1) / 2};
  }

  // After a change in the first page, so that the change and not the sum is what is wrong.
  static void SetSumOfFirstPage(std::string* song) {
    const std::size_t length = sound_files::OggPages(*song).at(0).length;
    const std::size_t header = 27 + static_cast<unsigned char>((*song)[26]);
    auto* const bytes = reinterpret_cast<unsigned char*>(song->data());
    ogg_page page{bytes, static_cast<long>(header), bytes + header, static_cast<long>(length - header)};
    ogg_page_checksum_set(&page);
  }

  static bool IsSilent(const std::vector<float>& samples, std::size_t from, std::size_t to) {
    for (std::size_t i = from * 2; i < to * 2; ++i) {
      if (samples[i] != 0.0F) return false;
    }
    return true;
  }

  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("1 Song.obd");
};

TEST_F(OggDamage, CutInTheMiddlePlaysWhatIsThere) {
  const std::string song = Song(kVorbis);
  const std::vector<float> whole = Heard(song);
  const test_support::CoutCapture console;
  const std::vector<float> half = Heard(song.substr(0, song.size() / 2));
  EXPECT_GT(half.size(), 80'000U);
  EXPECT_LT(half.size(), 160'000U);
  EXPECT_EQ(
      Difference(std::vector<float>(whole.begin(), whole.begin() + static_cast<long>(half.size())), half),
      (std::pair<std::size_t, std::size_t>(half.size() / 2, half.size() / 2)));
  EXPECT_EQ(console.Text(), Warning("the Ogg stream has no end: the file was cut off"));
}

TEST_F(OggDamage, LastBytesMissing) {
  const std::string song = Song(kVorbis);
  const test_support::CoutCapture console;
  EXPECT_GT(Heard(song.substr(0, song.size() - 300)).size(), 2U * 120'000U);
  EXPECT_EQ(console.Text(), Warning("the Ogg stream has no end: the file was cut off"));
}

TEST_F(OggDamage, JunkBehindTheEndIsNoDamage) {
  const std::string song = Song(kVorbis);
  const test_support::CoutCapture console;
  EXPECT_EQ(Heard(song + std::string(5000, 'x')).size(), 2U * kFrames);
  EXPECT_EQ(console.Text(), "");
}

TEST_F(OggDamage, CutInTheFirstPageOfAudio) {
  const std::string song = Song(kVorbis);
  const sound_files::OggPage first = sound_files::OggPages(song).at(2);
  const std::string text =
      "the Ogg Vorbis file holds no audio: not one frame could be decoded. Export the recording again.";
  ExpectRefused(song.substr(0, first.start + first.length / 2), text);
  ExpectProbeRefuses(text);
}

TEST_F(OggDamage, CutInTheHeaders) {
  const std::string text =
      "the Ogg Vorbis stream cannot be decoded: its headers are damaged or cut off. Encode the recording "
      "again.";
  for (const std::size_t length : {100U, 1000U, 3000U}) {
    ExpectRefused(Song(kVorbis).substr(0, length), text);
    ExpectProbeRefuses(text);
  }
}

TEST_F(OggDamage, VersionOfTheFuture) {
  std::string song = Song(kVorbis);
  song[song.find("\x01vorbis") + 7] = 9;
  SetSumOfFirstPage(&song);
  const std::string text =
      "the Ogg Vorbis stream cannot be decoded: its headers are damaged or cut off. Encode the recording "
      "again.";
  ExpectRefused(song, text);
  ExpectProbeRefuses(text);
}

TEST_F(OggDamage, PartOfALongerStreamPlaysFromItsFirstFrame) {
  // Its first page of audio was left out on purpose: nothing is broken, only the stream's clock does not
  // begin at 0.
  std::string song = Song(kVorbis);
  const std::vector<float> whole = Heard(song);
  const sound_files::OggPage first = sound_files::OggPages(song).at(2);
  song.erase(first.start, first.length);
  const test_support::CoutCapture console;
  const std::vector<float> heard = Heard(song);
  EXPECT_LT(heard.size(), whole.size() - static_cast<std::size_t>(first.granule));
  EXPECT_TRUE(std::equal(heard.rbegin(), heard.rend(), whole.rbegin()));
  EXPECT_EQ(console.Text(), "");
}

TEST_F(OggDamage, NotEvenAHeader) {
  const std::string text =
      "the Ogg file cannot be decoded: its header is damaged, cut off or of an unknown kind. Export the "
      "recording again.";
  ExpectRefused(Song(kVorbis).substr(0, 30), text);
  ExpectRefused(Song(kOpus).substr(0, 100), text);
  ExpectRefused("OggS and then nothing that anybody knows", text);
}

TEST_F(OggDamage, StreamOfNoFrames) {
  sound_files::Write(path_, kVorbis, 48000, 2, {});
  ExpectRefused(
      sound_files::Bytes(path_),
      "the Ogg Vorbis file holds no audio: not one frame could be decoded. Export the recording again.");
}

TEST_F(OggDamage, BehindALostPageEverythingComesAtItsTime) {
  const std::string song = Song(kVorbis);
  const std::vector<float> whole = Heard(song);
  const std::vector<sound_files::OggPage> pages = sound_files::OggPages(song);
  ASSERT_GT(pages.size(), 8U);
  for (std::size_t lost = 3; lost + 2 < pages.size(); ++lost) {
    std::string broken = song;
    broken.replace(pages[lost].start + pages[lost].length / 2, 40, 40, '\0');
    const test_support::CoutCapture console;
    const std::vector<float> heard = Heard(broken);
    ASSERT_EQ(heard.size(), whole.size()) << "page " << lost;
    const auto [from, to] = Difference(whole, heard);
    // Not one frame outside the lost page and its overlap with its neighbours is touched.
    EXPECT_GE(from + 2048, static_cast<std::size_t>(pages[lost - 1].granule)) << "page " << lost;
    EXPECT_LE(to, static_cast<std::size_t>(pages[lost].granule) + 2048) << "page " << lost;
    const std::size_t middle = static_cast<std::size_t>(pages[lost - 1].granule + pages[lost].granule) / 2;
    EXPECT_TRUE(IsSilent(heard, middle - 1000, middle + 1000)) << "page " << lost;
    EXPECT_NE(console.Text().find("frames are lost and silent.\n"), std::string::npos) << console.Text();
  }
}

TEST_F(OggDamage, BehindALostFirstPageEverythingComesAtItsTime) {
  const std::string song = Song(kVorbis);
  const std::vector<float> whole = Heard(song);
  const std::vector<sound_files::OggPage> pages = sound_files::OggPages(song);
  std::string broken = song;
  broken.replace(pages[2].start + 100, 40, 40, '\0');
  const test_support::CoutCapture console;
  const std::vector<float> heard = Heard(broken);
  ASSERT_EQ(heard.size(), whole.size());
  const auto [from, to] = Difference(whole, heard);
  EXPECT_EQ(from, 0U);
  EXPECT_LE(to, static_cast<std::size_t>(pages[2].granule) + 2048);
  EXPECT_NE(console.Text().find("frames are lost and silent.\n"), std::string::npos) << console.Text();
}

TEST_F(OggDamage, LastPageButOneLost) {
  const std::string song = Song(kVorbis);
  const std::vector<sound_files::OggPage> pages = sound_files::OggPages(song);
  std::string broken = song;
  broken.replace(pages[pages.size() - 2].start + 100, 40, 40, '\0');
  const test_support::CoutCapture console;
  EXPECT_EQ(Heard(broken).size(), 2U * kFrames);
  EXPECT_NE(console.Text().find("frames are lost and silent.\n"), std::string::npos) << console.Text();
}

TEST_F(OggDamage, ChainWhoseRateChanges) {
  const std::string text =
      "this is a chain of 2 Ogg streams, and the rate changes inside, from 48000 to 44100 Hz. Keep one "
      "recording in each file.";
  ExpectRefused(Song(kVorbis, 48000, 2, 1) + Song(kVorbis, 44100, 2, 2), text);
  ExpectProbeRefuses(text);
}

TEST_F(OggDamage, ChainWhoseChannelsChange) {
  const std::string text =
      "this is a chain of 2 Ogg streams, and the channels change inside, from 2 to 1. Keep one recording in "
      "each file.";
  ExpectRefused(Song(kVorbis, 48000, 2, 1) + Song(kVorbis, 48000, 1, 2), text);
  ExpectProbeRefuses(text);
}

TEST_F(OggDamage, ChainOfOneFormatIsPlayedAsOneWithAWarning) {
  const std::string one = Song(kVorbis, 48000, 2, 1);
  const std::string two = Song(kVorbis, 48000, 2, 2);
  std::vector<float> expected = Heard(one);
  const std::vector<float> rest = Heard(two);
  expected.insert(expected.end(), rest.begin(), rest.end());
  const test_support::CoutCapture console;
  EXPECT_EQ(Heard(one + two), expected);
  EXPECT_EQ(console.Text(),
            Warning("several Ogg streams follow each other in this file; they are played as one"));
}

TEST_F(OggDamage, ChainOfOneStreamWithItself) {
  const std::string song = Song(kVorbis);
  ExpectRefused(
      song + song,
      "this is a chain of Ogg streams that all bear the same number, which cannot be told apart. Keep one "
      "recording in each file.");
}

TEST_F(OggDamage, ChainOfOpus) {
  ExpectRefused(
      Song(kOpus, 48000, 2, 1) + Song(kOpus, 48000, 2, 2),
      "this is a chain of several Ogg streams, of which only the first would be heard. Keep one recording "
      "in each file.");
}

TEST_F(OggDamage, OpusCutInTheMiddleAllocatesWhatIsThere) {
  const std::string song = Song(kOpus);
  const test_support::CoutCapture console;
  const std::vector<float> half = Heard(song.substr(0, song.size() / 2));
  EXPECT_GT(half.size(), 60'000U);
  EXPECT_LT(half.size(), 160'000U);
  EXPECT_EQ(console.Text(), Warning("the Ogg stream has no end: the file was cut off"));
  EXPECT_EQ(tesk_audio::ProbeAudioFile(path_).frames, -1);
}

TEST_F(OggDamage, OpusWithALostPageSaysThatTheRestComesTooEarly) {
  std::string song = Song(kOpus);
  song.replace(song.size() / 2, 40, 40, '\0');
  const test_support::CoutCapture console;
  const std::size_t frames = Heard(song).size() / 2;
  EXPECT_EQ(console.Text(),
            Warning("the Ogg stream is damaged; what follows the damage comes too early") +
                Warning("only " + std::to_string(frames) + " of 144000 frames could be decoded"));
}

}  // namespace
