// Files decoded in several places at once: samples, warnings and errors are those of decoding from first to
// last, whatever is wrong with the file and whatever the machine refuses.
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>

#include "reference_suite/audio/decode/decode_content.h"
#include "reference_suite/audio/decode/decoding_places.h"
#include "reference_suite/audio/decode/open_decoder.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/no_threads.h"

namespace {

constexpr int kVorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
constexpr int kFlac = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
constexpr int kWav = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
constexpr int kFloatWav = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
constexpr int kRate = 44100;
constexpr long long kFrames = 40LL * kRate;  // long enough for four segments and more

struct Outcome {
  std::vector<float> samples;
  std::string console;
  std::string error;
  int decoders = 1;
};

// Decodes as the loader does, on a machine of so many cores; 1 is decoding from first to last.
Outcome DecodeOn(int cores, const std::string& path, double rateHz = 0.0) {
  const test_support::CoutCapture console;
  std::atomic<int> decoders{1};
  Outcome outcome;
  try {
    tesk_audio::DecodingPlaces places(cores);
    tesk_audio::AudioFile file(path);
    tesk_audio::DecodeRequest request;
    request.shownPath = "song";
    request.rateHz = rateHz;
    request.availableMemoryBytes = [] { return std::numeric_limits<unsigned long long>::max(); };
    request.places = cores > 1 ? &places : nullptr;
    request.openAgain = [&] {
      ++decoders;
      auto again = std::make_unique<tesk_audio::OpenedAudio>();
      again->file = std::make_unique<tesk_audio::AudioFile>(tesk_audio::AudioFile::Again(), file);
      again->decoder = tesk_audio::OpenDecoder(*again->file);
      return again;
    };
    const auto decoder = tesk_audio::OpenDecoder(file);
    outcome.samples = Samples(*tesk_audio::DecodeContent(*decoder, request));
  } catch (const tesk_audio::TESKAudioError& error) {
    outcome.error = std::string(typeid(error).name()) + ": " + error.what();
  }
  outcome.console = console.Text();
  outcome.decoders = decoders;
  return outcome;
}

class Segments : public testing::Test {
 protected:
  std::string Song(int format, unsigned channels = 2, long long frames = kFrames) const {
    sound_files::Write(path_, format, kRate, channels, sound_files::Noise(frames, channels));
    return sound_files::Bytes(path_);
  }

  void ExpectSameAsFromFirstToLast(const std::string& what, double rateHz = 0.0) const {
    const Outcome plain = DecodeOn(1, path_, rateHz);
    ASSERT_EQ(plain.decoders, 1);
    for (const int cores : {2, 3, 5}) {
      const Outcome split = DecodeOn(cores, path_, rateHz);
      ASSERT_EQ(split.samples.size(), plain.samples.size()) << what << ", " << cores << " cores";
      EXPECT_TRUE(split.samples == plain.samples) << what << ", " << cores << " cores";
      EXPECT_EQ(split.console, plain.console) << what << ", " << cores << " cores";
      EXPECT_EQ(split.error, plain.error) << what << ", " << cores << " cores";
    }
  }

  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("1 Song.obd");
};

// What the library alone makes of the file.
std::vector<float> PlainLibrary(const std::string& path) {
  SF_INFO info{};
  SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
  std::vector<float> samples(static_cast<std::size_t>(info.frames) * static_cast<std::size_t>(info.channels));
  long long done = 0;
  while (done < info.frames) {
    const auto got = sf_readf_float(file, samples.data() + done * info.channels,
                                    std::min<sf_count_t>(4096, info.frames - done));
    if (got <= 0) break;
    done += got;
  }
  sf_close(file);
  EXPECT_EQ(done, info.frames);
  return samples;
}

class HealthyFormats : public Segments, public testing::WithParamInterface<int> {};

TEST_P(HealthyFormats, EverySampleIsTheLibrarys) {
  for (const unsigned channels : {1U, 2U, 3U}) {
    Song(GetParam(), channels);
    const std::vector<float> plain = PlainLibrary(path_);
    for (const int cores : {1, 2, 3, 4}) {
      const Outcome outcome = DecodeOn(cores, path_);
      EXPECT_TRUE(outcome.samples == plain) << channels << " channels, " << cores << " cores";
      EXPECT_EQ(outcome.decoders, cores) << channels << " channels";
      EXPECT_EQ(outcome.console, "");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, HealthyFormats,
                         testing::Values(kVorbis, kFlac, kWav, kFloatWav, SF_FORMAT_FLAC | SF_FORMAT_PCM_24,
                                         SF_FORMAT_AIFF | SF_FORMAT_PCM_24, SF_FORMAT_RF64 | SF_FORMAT_FLOAT,
                                         SF_FORMAT_WAV | SF_FORMAT_PCM_32));

TEST_F(Segments, MoreCoresThanTheFileIsWorthAreLeftAlone) {
  Song(kWav);
  EXPECT_EQ(DecodeOn(100, path_).decoders, 5);
  Song(kWav, 2, 15 * kRate);
  EXPECT_EQ(DecodeOn(4, path_).decoders, 1);
}

TEST_F(Segments, ResamplingGoesFromFirstToLast) {
  Song(kFlac);
  EXPECT_EQ(DecodeOn(4, path_, 48000.0).decoders, 1);
  ExpectSameAsFromFirstToLast("resampled", 48000.0);
}

TEST_F(Segments, FormatsThatDoNotSeekToTheFrameGoFromFirstToLast) {
  for (const int format : {SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM}) {
    Song(format);
    EXPECT_EQ(DecodeOn(4, path_).decoders, 1) << format;
  }
}

TEST_F(Segments, OggWithDamageAnywhere) {
  const std::string song = Song(kVorbis);
  for (std::size_t tenth = 0; tenth < 10; ++tenth) {
    std::string damaged = song;
    for (std::size_t i = 0; i < 40; ++i) damaged[song.size() * tenth / 10 + 4500 + i] = '\0';
    sound_files::WriteBytes(path_, damaged);
    ExpectSameAsFromFirstToLast("zeros at tenth " + std::to_string(tenth));
  }
}

TEST_F(Segments, OggThatLacksAPage) {
  const std::string song = Song(kVorbis);
  const std::vector<sound_files::OggPage> pages = sound_files::OggPages(song);
  for (std::size_t lost = 2; lost < pages.size(); lost += pages.size() / 7) {
    sound_files::WriteBytes(
        path_, song.substr(0, pages[lost].start) + song.substr(pages[lost].start + pages[lost].length));
    ExpectSameAsFromFirstToLast("without page " + std::to_string(lost));
  }
}

TEST_F(Segments, OggThatIsCutOffChainedOrFollowedByJunk) {
  const std::string song = Song(kVorbis);
  const auto expectSame = [&](const std::string& bytes, const std::string& what) {
    sound_files::WriteBytes(path_, bytes);
    ExpectSameAsFromFirstToLast(what);
  };
  for (const std::size_t quarter : {1U, 2U, 3U}) expectSame(song.substr(0, song.size() / 4 * quarter), "cut");
  expectSame(song.substr(0, song.size() - 300), "without its last bytes");
  expectSame(song + song, "twice");
  expectSame(song + std::string(5000, 'x'), "with junk");
  std::string flipped = song;
  flipped[song.size() / 3] = static_cast<char>(flipped[song.size() / 3] ^ 0x10);
  expectSame(flipped, "with a flipped bit");
}

TEST_F(Segments, FlacWithDamageAnywhere) {
  const std::string song = Song(kFlac);
  for (std::size_t tenth = 0; tenth < 10; ++tenth) {
    std::string damaged = song;
    for (std::size_t i = 0; i < 40; ++i) damaged[song.size() * tenth / 10 + 9000 + i] = '\0';
    sound_files::WriteBytes(path_, damaged);
    ExpectSameAsFromFirstToLast("zeros at tenth " + std::to_string(tenth));
  }
  sound_files::WriteBytes(path_, song.substr(0, song.size() / 2));
  ExpectSameAsFromFirstToLast("cut in the middle");
  sound_files::WriteBytes(path_, song.substr(0, song.size() / 3) + song.substr(song.size() / 3 + 20'000));
  ExpectSameAsFromFirstToLast("with a hole");
}

TEST_F(Segments, WavThatIsCutOff) {
  const std::string song = Song(kWav);
  sound_files::WriteBytes(path_, song.substr(0, song.size() / 2));
  ExpectSameAsFromFirstToLast("cut in the middle");
  sound_files::WriteBytes(path_, song.substr(0, song.size() - 3));
  ExpectSameAsFromFirstToLast("without its last bytes");
}

TEST_F(Segments, SamplesThatAreNotFiniteAreCountedOnce) {
  std::vector<float> samples = sound_files::Noise(kFrames, 2);
  // In every segment, and around every place where two can meet.
  for (std::size_t i = 0; i < samples.size(); i += 1021) samples[i] = std::numeric_limits<float>::infinity();
  for (std::size_t i = 7; i < samples.size(); i += 4099) samples[i] = std::numeric_limits<float>::quiet_NaN();
  sound_files::Write(path_, kFloatWav, kRate, 2, samples);
  EXPECT_EQ(DecodeOn(4, path_).decoders, 4);
  EXPECT_NE(DecodeOn(4, path_).console, "");
  ExpectSameAsFromFirstToLast("not finite");
}

TEST_F(Segments, ThreadsThatAreRefusedLeaveTheRestToOne) {
  for (const int format : {kVorbis, kFlac, kWav}) {
    Song(format);
    const Outcome plain = DecodeOn(1, path_);
    const test_support::NoThreads refused;
    const Outcome outcome = DecodeOn(4, path_);
    EXPECT_TRUE(outcome.samples == plain.samples);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.decoders, 1);
  }
}

TEST_F(Segments, EightFilesAtTheSameTime) {
  Song(kVorbis);
  const std::vector<float> plain = PlainLibrary(path_);
  std::atomic<int> equal{0};
  std::vector<std::thread> loaders;
  for (int index = 0; index < 8; ++index) {
    loaders.emplace_back([&] { equal += Samples(*Decode(path_)) == plain ? 1 : 0; });
  }
  for (std::thread& loader : loaders) loader.join();
  EXPECT_EQ(equal, 8);
}

TEST(DecodingPlaces, WhoWasStartedFirstGetsTheCoresAndTheWeight) {
  const int here = ::getpriority(PRIO_PROCESS, 0);
  tesk_audio::DecodingPlaces first(3, 10);
  EXPECT_EQ(first.Claim(), 3);
  EXPECT_EQ(first.NiceValue(), std::min(19, here + 5));
  tesk_audio::DecodingPlaces second(3, 11);
  EXPECT_EQ(second.Claim(), 1);
  EXPECT_EQ(second.NiceValue(), std::min(19, here + 15));
  first.Keep(1);
  tesk_audio::DecodingPlaces third(3, 12);
  EXPECT_EQ(third.Claim(), 1);
  EXPECT_EQ(third.NiceValue(), first.NiceValue());
}

TEST(DecodingPlaces, WhoWasStartedFirstAndRunsSecondGetsThemToo) {
  tesk_audio::DecodingPlaces second(2, 11);
  const int usual = second.NiceValue();
  tesk_audio::DecodingPlaces first(2, 10);
  EXPECT_EQ(first.Claim(), 2);
  EXPECT_EQ(first.NiceValue(), usual);
  EXPECT_EQ(second.Claim(), 1);
  EXPECT_GT(second.NiceValue(), usual);
}

TEST(DecodingPlaces, PlacesThatAreClaimedAreNotTakenBack) {
  tesk_audio::DecodingPlaces second(2, 11);
  EXPECT_EQ(second.Claim(), 2);
  tesk_audio::DecodingPlaces first(2, 10);
  EXPECT_EQ(first.Claim(), 1);
  EXPECT_EQ(second.Claim(), 2);
}

TEST(DecodingPlaces, AreGivenBack) {
  {
    tesk_audio::DecodingPlaces some(5);
    some.Keep(2);
    some.Keep(4);
    EXPECT_EQ(some.Claim(), 2);
  }
  EXPECT_EQ(tesk_audio::DecodingPlaces(4).Claim(), 4);
  EXPECT_GE(tesk_audio::CoreCount(), 1);
}

}  // namespace
