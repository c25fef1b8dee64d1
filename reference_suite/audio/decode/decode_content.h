#pragma once

#include <functional>
#include <memory>
#include <string>

#include "reference_suite/audio/decode/audio_decoder.h"
#include "reference_suite/audio/decode/audio_file.h"
#include "reference_suite/audio/decode/memory_content.h"

namespace tesk_audio {

class DecodingPlaces;

// A file and what decodes it, which reads from it.
struct OpenedAudio {
  std::unique_ptr<AudioFile> file;
  std::unique_ptr<AudioDecoder> decoder;
};

struct DecodeRequest {
  std::string shownPath;
  double rateHz = 0.0;    // 0: the file's own
  unsigned channels = 0;  // that the file must have; 0: any
  // What a song may have: its length is a 32-bit number everywhere.
  long long maxFrames = 4'294'967'295LL;
  std::function<unsigned long long()> availableMemoryBytes;  // asked on several threads
  // Opens the same file once more, on any thread; and how many threads may decode it. Without both the
  // calling thread decodes alone.
  std::function<std::unique_ptr<OpenedAudio>()> openAgain;
  DecodingPlaces* places = nullptr;
  double shortestSegmentSeconds = 8.0;  // what is shorter than two of them is not cut
};

// Decodes to the end. What a header promises is only ever used to refuse what cannot fit; the length is what
// came out. Samples that are not finite become 0. Everything odd about the file is one warning line on the
// console. Throws TESKAudioError when memory is short, and the decoder's own class for a file without a
// single frame, with too many, of a rate that no show has, or with other channels than it must have.
std::unique_ptr<MemoryContent> DecodeContent(AudioDecoder& decoder, const DecodeRequest& request);

// What both decoding and probing refuse at once: a rate that no show has, a length that is promised, though
// not there, and one that is. `frames` may be -1, unknown.
void RequirePlayableFormat(const DecodedFormat& format, const DecodeRequest& request);
void RequirePlayableLength(const DecodedFormat& format, long long frames, const DecodeRequest& request);

}  // namespace tesk_audio
