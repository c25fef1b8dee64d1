#include "tests/reference_suite/audio/support/sound_files.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <random>
#include <sstream>

#include "tests/support/temporary_folder.h"

namespace sound_files {

namespace {

// The library itself would take 1 for 32767 and not for 32768, as it does when it reads.
sf_count_t WriteIntegers(SNDFILE* file, const float* samples, sf_count_t frames, int channels) {
  std::vector<int> integers;
  for (sf_count_t i = 0; i < frames * channels; ++i) {
    const double scaled = static_cast<double>(samples[i]) * 2147483648.0;
    integers.push_back(static_cast<int>(std::clamp(scaled, -2147483648.0, 2147483647.0)));
  }
  return sf_writef_int(file, integers.data(), frames);
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  path_ = test_support::MakeTemporaryFolder();
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::vector<float> IndexCoded(long long frames, unsigned channels, long long first) {
  std::vector<float> samples;
  samples.reserve(static_cast<std::size_t>(frames) * channels);
  for (long long frame = first; frame < first + frames; ++frame) {
    for (unsigned channel = 0; channel < channels; ++channel) {
      samples.push_back(static_cast<float>(frame + channel * 1000) / 8388608.0F);
    }
  }
  return samples;
}

std::vector<float> Sines(long long frames, unsigned channels, double rateHz) {
  std::vector<float> samples;
  samples.reserve(static_cast<std::size_t>(frames) * channels);
  for (long long frame = 0; frame < frames; ++frame) {
    for (unsigned channel = 0; channel < channels; ++channel) {
      const double turns = static_cast<double>(frame) * 440.0 * (1.0 + 0.5 * channel) / rateHz;
      samples.push_back(static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * turns)));
    }
  }
  return samples;
}

std::vector<float> Noise(long long frames, unsigned channels, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<float> samples(static_cast<std::size_t>(frames) * channels);
  for (float& sample : samples) sample = static_cast<float>(random()) / 4294967296.0F - 0.5F;
  return samples;
}

void Write(const std::string& path, int format, int rateHz, unsigned channels,
           const std::vector<float>& samples) {
  SF_INFO info{};
  info.format = format;
  info.samplerate = rateHz;
  info.channels = static_cast<int>(channels);
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr) << path << ": " << sf_strerror(nullptr);
  const int kind = format & SF_FORMAT_SUBMASK;
  const bool isInteger = kind == SF_FORMAT_PCM_16 || kind == SF_FORMAT_PCM_24 || kind == SF_FORMAT_PCM_32;
  // In parts: the encoder of Ogg Vorbis keeps a whole request on its stack.
  constexpr sf_count_t part = 4096;
  const auto frames = static_cast<sf_count_t>(samples.size() / channels);
  for (sf_count_t done = 0; done < frames;) {
    const sf_count_t now = std::min(part, frames - done);
    const float* const from = samples.data() + done * info.channels;
    const sf_count_t written =
        isInteger ? WriteIntegers(file, from, now, info.channels) : sf_writef_float(file, from, now);
    ASSERT_EQ(written, now) << sf_strerror(file);
    done += now;
  }
  ASSERT_EQ(sf_close(file), 0);
}

std::string Bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  ASSERT_TRUE(file.good()) << path;
}

std::vector<OggPage> OggPages(const std::string& bytes) {
  const auto at = [&bytes](std::size_t index) { return static_cast<unsigned char>(bytes.at(index)); };
  std::vector<OggPage> pages;
  for (std::size_t start = bytes.find("OggS"); start != std::string::npos;
       start = bytes.find("OggS", start + 4)) {
    OggPage page{start, std::size_t{27} + at(start + 26), 0};
    for (std::size_t i = 0; i < at(start + 26); ++i) page.length += at(start + 27 + i);
    for (std::size_t i = 8; i > 0; --i) page.granule = page.granule * 256 + at(start + 5 + i);
    pages.push_back(page);
  }
  return pages;
}

}  // namespace sound_files
