#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sound_files {

// An MP3 of noise as libsndfile writes it: a first frame without music, then frames with it.
struct Mp3Parts {
  std::string tag;                      // the first frame
  std::vector<std::string> music;       // the others
  std::size_t countAt = 0;              // in the tag: how many the others are
  std::size_t addedInFront = 0;         // frames of audio that the encoder and the decoder add
  long long Samples(int rateHz) const;  // in all frames with music

  std::string Music() const;
  std::string Whole() const { return tag + Music(); }
  std::string WithCount(std::uint32_t count) const;
};

enum class BitRate { kSteady, kVarying };

Mp3Parts MakeMp3(const std::string& path, int rateHz, unsigned channels, long long frames,
                 BitRate bitRate = BitRate::kVarying);

}  // namespace sound_files
