// The factory stands alone in its object, so that a program can put another in its place.
#include <new>

#include "reference_suite/audio/decode/available_memory.h"
#include "reference_suite/audio/decode/content_argument.h"
#include "reference_suite/audio/decode/decode_content.h"
#include "reference_suite/audio/decode/decoding_places.h"
#include "reference_suite/audio/decode/decoding_settings.h"
#include "reference_suite/audio/decode/open_decoder.h"
#include "reference_suite/audio/decode/out_of_memory.h"
#include "reference_suite/audio/text/shown_path.h"
#include "suite/audio/create.h"

namespace tesk_audio {

AudioSampleContent* CreateAudioSampleContent(const std::string& path, const std::string& argument) {
  try {
    DecodeRequest request;
    request.shownPath = ShownPath(path);
    const WantedFormat wanted = FormatOfContentArgument(request.shownPath, argument);
    request.rateHz = wanted.rateHz;
    request.channels = wanted.channels;
    request.availableMemoryBytes = AvailableMemoryBytes;
    // Before the file is opened: the song that was asked for first gets the cores.
    const DecodingSettings settings = GetDecodingSettings();
    DecodingPlaces places(settings.cores);
    request.places = &places;
    request.shortestSegmentSeconds = settings.shortestSegmentSeconds;
    AudioFile file(path);
    request.openAgain = [&file] {
      auto again = std::make_unique<OpenedAudio>();
      again->file = std::make_unique<AudioFile>(AudioFile::Again(), file);
      again->decoder = OpenDecoder(*again->file);
      return again;
    };
    const std::unique_ptr<AudioDecoder> decoder = OpenDecoder(file);
    return DecodeContent(*decoder, request).release();
  } catch (const std::bad_alloc&) {
    ThrowOutOfMemory(path);
  }
}

}  // namespace tesk_audio
