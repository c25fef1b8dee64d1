// Alone in its object, so that a program can put another in its place.
#include <new>
#include <vector>

#include "reference_suite/audio/decode/decode_content.h"
#include "reference_suite/audio/decode/open_decoder.h"
#include "reference_suite/audio/decode/out_of_memory.h"
#include "suite/audio/create.h"

namespace tesk_audio {

AudioFileInfo ProbeAudioFile(const std::string& path) {
  try {
    AudioFile file(path);
    const std::unique_ptr<AudioDecoder> decoder = OpenDecoder(file);
    const DecodedFormat& format = decoder->Format();
    DecodeRequest request;
    request.shownPath = file.Name();
    RequirePlayableLength(format, format.frames > 0 ? format.frames : -1, request);
    // Whatever the header promises, there must at least be a first frame.
    std::vector<float> frame(format.channels);
    if (decoder->Read(frame.data(), 1) == 0) RequirePlayableLength(format, 0, request);
    return {format.frames, format.rateHz, format.channels, format.name};
  } catch (const std::bad_alloc&) {
    ThrowOutOfMemory(path);
  }
}

}  // namespace tesk_audio
