#pragma once

#include <vorbis/vorbisfile.h>

#include <cstddef>
#include <string>
#include <vector>

#include "reference_suite/audio/decode/audio_decoder.h"
#include "reference_suite/audio/decode/audio_file.h"
#include "reference_suite/audio/decode/library_memory.h"

namespace tesk_audio {

// Ogg Vorbis. Where pages were lost, silence of the lost length stands in, so that everything behind the
// damage still comes at its own time: cues follow the music, not the file.
//
// Units      frames of the file's own rate.
// Errors     OggVorbisDecodeError when the headers are broken or the format changes inside.
class VorbisDecoder : public AudioDecoder {
 public:
  explicit VorbisDecoder(AudioFile& file);
  ~VorbisDecoder() override;
  VorbisDecoder(const VorbisDecoder&) = delete;
  VorbisDecoder& operator=(const VorbisDecoder&) = delete;

  const DecodedFormat& Format() const override { return format_; }
  void Inspect() override;
  std::size_t Read(float* frames, std::size_t count) override;
  bool CanBeShared() const override;
  bool BeginAt(long long frame) override;
  void CountAsDelivered(long long count) override { handedOut_ += count; }
  std::vector<std::string> Warnings() const override;

 private:
  // What the library decoded in one step, in its own memory: a row for each channel.
  struct Piece {
    float** channels = nullptr;
    std::size_t frames = 0;
  };

  static std::size_t ReadCallback_(void* buffer, std::size_t size, std::size_t count, void* self);
  static int SeekCallback_(void* self, ogg_int64_t offset, int whence);
  static long TellCallback_(void* self);
  // Before every step of the library.
  void GrantReads_();
  void RequireOneFormat_();
  // One step of the library, at most `most` frames; what a gap before them needs goes into queue_. False at
  // the end.
  bool DecodeSome_(std::size_t most, Piece* piece);
  void Enqueue_(const Piece& piece);
  void Interleave_(const Piece& piece, float* frames) const;
  // `frames` that are missing belong where the last gap began, or to the end of the queue without one.
  void FillGap_(long long frames);
  std::size_t QueuedFrames_() const { return queue_.size() / format_.channels; }

  const LibraryMemoryClaim memory_;  // before the library is asked for anything
  AudioFile& file_;
  // The library looks for a page for ever where a file has changed under it since it saw one there; what it
  // reads beyond this fails.
  long long bytesGranted_ = 0;
  OggVorbis_File stream_{};
  DecodedFormat format_;
  std::vector<std::string> warnings_;
  std::vector<float> queue_;   // decoded, not yet handed out
  std::size_t queueRead_ = 0;  // frames of it that are handed out
  bool gapOpen_ = false;       // pages are missing and the stream has not yet said where it goes on
  std::size_t gapAt_ = 0;      // frames of queue_ before the gap
  long long startOffset_ = 0;  // where the first frame of audio says it stands
  long long startLeap_ = 0;    // the same, until the stream's position has leaped by it
  long long lastTell_ = 0;     // where the stream said it stood
  bool odd_ = false;           // a position has leaped, pages are missing, or the library reported an error
  long long lostFrames_ = 0;   // replaced by silence
  long long handedOut_ = 0;
};

}  // namespace tesk_audio
