#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tesk_audio {

// What a file says of itself before it is decoded.
struct DecodedFormat {
  std::string name;  // "Ogg Vorbis", "WAV", "FLAC", ...
  double rateHz = 0.0;
  unsigned channels = 0;
  long long frames = -1;  // -1 when only decoding can tell; a promise, never to be allocated from
  bool isOgg = false;     // decides the class of its errors
  // What the header promises of a file that may have been cut off, where that is known.
  long long promisedFrames = 0;
};

// Decodes one file from its first frame to its last. Threads: one at a time.
class AudioDecoder {
 public:
  virtual ~AudioDecoder() = default;

  virtual const DecodedFormat& Format() const = 0;
  // Looks through the whole file for damage that the decoding libraries keep quiet about; before the first
  // Read, and left out where only the header matters. Refuses what cannot be played in time.
  virtual void Inspect() = 0;
  // Up to `count` interleaved frames; 0 at the end and where nothing more can be decoded. Throws
  // TESKAudioError when the file cannot be read to its end.
  virtual std::size_t Read(float* frames, std::size_t count) = 0;

  // ---- decoding one file in several places at once -----------------------------------------------

  // Whether another decoder of the same file that begins at any frame delivers, from there on, the samples
  // that this one would: the format allows it, and nothing odd has been met so far. After Inspect.
  virtual bool CanBeShared() const { return false; }
  // Goes to `frame`, before the first Read and in place of Inspect. False when that cannot be done to the
  // frame; nothing may be read then.
  virtual bool BeginAt(long long /*frame*/) { return false; }
  // Others have delivered the next `count` frames, up to the end; nothing is read any more.
  virtual void CountAsDelivered(long long /*count*/) {}

  // What was wrong with a file that could be decoded all the same, in words. Complete after the end.
  virtual std::vector<std::string> Warnings() const = 0;
};

// Throws OggVorbisDecodeError for a broken Ogg stream and AudioSampleContentError for any other file.
[[noreturn]] void ThrowUndecodable(bool isOgg, const std::string& message);

}  // namespace tesk_audio
