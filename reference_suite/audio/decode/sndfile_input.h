#pragma once

#include <sndfile.h>

#include <cstddef>
#include <string>

#include "reference_suite/audio/decode/audio_file.h"

namespace tesk_audio {

// The bytes that libsndfile is given: those of a file, or other ones in the place of its first.
//
// Units      bytes.
// Threads    one at a time.
class SndfileInput {
 public:
  explicit SndfileInput(AudioFile& file) : file_(file) {}

  // `front` stands in the place of all that is before `start`; goes back to the beginning.
  void Replace(std::string front, long long start);
  // Opens for reading; null where the library refuses it.
  SNDFILE* Open(SF_INFO* info);

 private:
  static sf_count_t LengthCallback_(void* self);
  static sf_count_t SeekCallback_(sf_count_t offset, int whence, void* self);
  static sf_count_t ReadCallback_(void* buffer, sf_count_t count, void* self);
  static sf_count_t WriteCallback_(const void* buffer, sf_count_t count, void* self);
  static sf_count_t TellCallback_(void* self);
  sf_count_t Length_() const;
  std::size_t Read_(char* buffer, std::size_t count);

  AudioFile& file_;
  std::string front_;
  long long start_ = 0;
  long long position_ = 0;
};

}  // namespace tesk_audio
