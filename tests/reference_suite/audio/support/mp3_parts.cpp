#include "tests/reference_suite/audio/support/mp3_parts.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <array>

#include "tests/reference_suite/audio/support/sound_files.h"

namespace sound_files {

namespace {

constexpr std::array<std::size_t, 15> kBitRates1 = {0,   32,  40,  48,  56,  64,  80, 96,
                                                    112, 128, 160, 192, 224, 256, 320};
constexpr std::array<std::size_t, 15> kBitRates2 = {0,  8,  16, 24,  32,  40,  48, 56,
                                                    64, 80, 96, 112, 128, 144, 160};

// Of a whole file that is known to consist of frames.
std::size_t FrameBytes(const std::string& song, std::size_t at, int rateHz) {
  const auto byte = static_cast<unsigned char>(song.at(at + 2));
  const bool isMpeg1 = rateHz >= 32'000;
  const std::size_t kilobits = (isMpeg1 ? kBitRates1 : kBitRates2).at(byte >> 4);
  return (isMpeg1 ? 144'000 : 72'000) * kilobits / static_cast<std::size_t>(rateHz) + (byte >> 1 & 1U);
}

// Noise that comes and goes, so that frames differ in length.
std::vector<float> Swells(long long frames, unsigned channels) {
  std::vector<float> samples = Noise(frames, channels);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (i / 20'000 % 2 == 0) samples[i] *= 0.001F;
  }
  return samples;
}

void WriteMp3(const std::string& path, int rateHz, unsigned channels, long long frames, BitRate bitRate) {
  SF_INFO info{};
  info.samplerate = rateHz;
  info.channels = static_cast<int>(channels);
  info.format = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
  SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
  int mode = bitRate == BitRate::kSteady ? SF_BITRATE_MODE_CONSTANT : SF_BITRATE_MODE_VARIABLE;
  sf_command(file, SFC_SET_BITRATE_MODE, &mode, sizeof mode);
  EXPECT_EQ(sf_command(file, SFC_GET_BITRATE_MODE, nullptr, 0), mode);
  const std::vector<float> samples = Swells(frames, channels);
  EXPECT_EQ(sf_writef_float(file, samples.data(), frames), frames);
  EXPECT_EQ(sf_close(file), 0);
}

}  // namespace

Mp3Parts MakeMp3(const std::string& path, int rateHz, unsigned channels, long long frames, BitRate bitRate) {
  WriteMp3(path, rateHz, channels, frames, bitRate);
  const std::string song = Bytes(path);
  Mp3Parts parts;
  // Texts may stand before the first frame.
  std::size_t at = std::min(song.find("Info"), song.find("Xing"));
  at = song.rfind('\xFF', at);
  for (std::size_t next = 0; at + 4 <= song.size(); at = next) {
    next = at + FrameBytes(song, at, rateHz);
    if (next > song.size()) break;
    (parts.tag.empty() ? parts.tag : parts.music.emplace_back()) = song.substr(at, next - at);
  }
  parts.countAt = std::min(parts.tag.find("Info"), parts.tag.find("Xing")) + 8;
  const std::size_t added = parts.countAt + 112 + 21;
  parts.addedInFront = (static_cast<unsigned char>(parts.tag.at(added)) << 4) +
                       (static_cast<unsigned char>(parts.tag.at(added + 1)) >> 4) + 529U;
  EXPECT_EQ(parts.Whole(), song.substr(song.find(parts.tag)));
  EXPECT_EQ(parts.WithCount(static_cast<std::uint32_t>(parts.music.size())), parts.Whole());
  return parts;
}

long long Mp3Parts::Samples(int rateHz) const {
  return static_cast<long long>(music.size()) * (rateHz >= 32'000 ? 1152 : 576);
}

std::string Mp3Parts::Music() const {
  std::string bytes;
  for (const std::string& frame : music) bytes += frame;
  return bytes;
}

std::string Mp3Parts::WithCount(std::uint32_t count) const {
  std::string song = Whole();
  for (std::size_t i = 0; i < 4; ++i) song[countAt + i] = static_cast<char>(count >> (24 - 8 * i) & 0xFF);
  return song;
}

}  // namespace sound_files
