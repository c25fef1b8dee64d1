#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace tesk_audio {

enum class SoundFileFormat {
  Float,  // WAV, 32-bit floating point
  Pcm24,  // WAV
  Pcm16,  // WAV
  Flac,   // 24 bits
  OggVorbis,
};

// The form that a name asks for by its ending, .wav (floating point), .flac or .ogg in small letters or
// capitals; nothing for every other ending.
std::optional<SoundFileFormat> FormatOfName(const std::string& path);

// Writes a sound file that appears under its name complete or not at all: until Commit it is called
// PATH.part, and it is gone when the writer is destroyed before. The same frames give the same bytes.
//
// Units      interleaved frames of 32-bit float; full scale is 1. Integer formats take the nearest number
//            that they have, so that what was decoded from one comes back unchanged, and clip beyond full
//            scale.
// Threads    one at a time.
// Errors     SoundFileError, naming the file; every byte's way to the disk is checked, for closing a file on
//            a full disk reports success.
class SoundFileWriter {
 public:
  SoundFileWriter(const std::string& path, SoundFileFormat format, double rateHz, unsigned channels);
  ~SoundFileWriter();
  SoundFileWriter(const SoundFileWriter&) = delete;
  SoundFileWriter& operator=(const SoundFileWriter&) = delete;

  void Write(const float* frames, std::size_t frameCount);
  // Nothing may be written afterwards.
  void Commit();

 private:
  struct State;
  void WriteBlock_();

  std::unique_ptr<State> state_;
};

}  // namespace tesk_audio
