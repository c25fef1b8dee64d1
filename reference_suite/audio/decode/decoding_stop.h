#pragma once

#include <string>

namespace tesk_audio {

// While one lives, no file is decoded to its end, in the whole process: nobody wants them any more. Whoever
// decodes meets TESKAudioError at the next block.
//
// Threads    any.
class DecodingStop {
 public:
  DecodingStop();
  ~DecodingStop();
  DecodingStop(const DecodingStop&) = delete;
  DecodingStop& operator=(const DecodingStop&) = delete;

  static bool IsWanted();
};

// Throws TESKAudioError, naming the file, while one lives.
void RequireWanted(const std::string& file);

}  // namespace tesk_audio
