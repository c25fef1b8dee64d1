#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A Vorbis file decoded by a library that has nothing to do with the encoder under test.
struct DecodedVorbis {
  bool opened = false;
  long long promisedFrames = 0;  // by the file's last page
  int rate = 0;
  int channels = 0;
  long serial = 0;
  std::string title;
  std::vector<float> left;
  std::vector<float> right;
};

DecodedVorbis DecodeVorbis(const std::vector<std::uint8_t>& bytes);
