#pragma once

#include <sndfile.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "reference_suite/audio/decode/audio_decoder.h"
#include "reference_suite/audio/decode/audio_file.h"
#include "reference_suite/audio/decode/library_memory.h"
#include "reference_suite/audio/decode/sndfile_input.h"

namespace tesk_audio {

// Everything but Ogg Vorbis: WAV, AIFF, FLAC, MP3, Ogg Opus and what else libsndfile reads.
// Errors     AudioSampleContentError; OggVorbisDecodeError for an Ogg stream.
class SndfileDecoder : public AudioDecoder {
 public:
  SndfileDecoder(AudioFile& file, bool isOgg);
  SndfileDecoder(const SndfileDecoder&) = delete;
  SndfileDecoder& operator=(const SndfileDecoder&) = delete;

  const DecodedFormat& Format() const override { return format_; }
  void Inspect() override;
  std::size_t Read(float* frames, std::size_t count) override;
  bool CanBeShared() const override;
  bool BeginAt(long long frame) override;
  void CountAsDelivered(long long count) override { handedOut_ += count; }
  std::vector<std::string> Warnings() const override;

 private:
  struct Closer_ {
    void operator()(SNDFILE* sound) const;
  };

  // False where the library refuses the file.
  bool Open_();
  // The library stops an MP3 where the length ends that it read or guessed: where more is there, it is told
  // the true one. `isOpen`: it has taken the file as it is.
  void PlayAllOfMp3_(bool isOpen);
  [[noreturn]] void Refuse_();
  sf_count_t ReadFrames_(float* frames, sf_count_t count);

  const LibraryMemoryClaim memory_;  // before the library is asked for anything
  AudioFile& file_;
  SndfileInput input_;
  const bool isOgg_;
  std::unique_ptr<SNDFILE, Closer_> sound_;
  DecodedFormat format_;
  std::vector<std::string> warnings_;
  bool seeksToTheFrame_ = false;
  bool isMp3_ = false;
  std::size_t mostAtOnce_ = 0;  // frames
  bool hasGaps_ = false;        // in an MP3 that does not say how long it should be
  bool metError_ = false;       // in any Read so far; the library forgets it with the next
  long long handedOut_ = 0;
};

}  // namespace tesk_audio
