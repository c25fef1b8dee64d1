// Alone in its object, so that a program can put another in its place.
#include <sys/stat.h>
#include <time.h>

#include <new>
#include <vector>

#include "reference_suite/audio/decode/decode_content.h"
#include "reference_suite/audio/decode/open_decoder.h"
#include "reference_suite/audio/decode/out_of_memory.h"
#include "reference_suite/audio/decode/probed_files.h"
#include "suite/audio/create.h"

namespace tesk_audio {

namespace {

AudioFileInfo Probe(const std::string& path) {
  AudioFile file(path);
  const std::unique_ptr<AudioDecoder> decoder = OpenDecoder(file);
  const DecodedFormat& format = decoder->Format();
  DecodeRequest request;
  request.shownPath = file.Name();
  RequirePlayableFormat(format, request);
  RequirePlayableLength(format, format.frames > 0 ? format.frames : -1, request);
  // Whatever the header promises, there must at least be a first frame.
  std::vector<float> frame(format.channels);
  if (decoder->Read(frame.data(), 1) == 0) RequirePlayableLength(format, 0, request);
  return {format.frames, format.rateHz, format.channels, format.name};
}

}  // namespace

AudioFileInfo ProbeAudioFile(const std::string& path) {
  try {
    // Before it is read: what changes meanwhile is not kept under what it was.
    struct stat file {};
    timespec now{};
    const bool exists = ::stat(path.c_str(), &file) == 0 && ::clock_gettime(CLOCK_REALTIME, &now) == 0;
    if (exists) {
      if (const auto known = ProbedFiles::Instance().Find(file)) return *known;
    }
    const AudioFileInfo info = Probe(path);
    if (exists) ProbedFiles::Instance().Keep(file, info, now);
    return info;
  } catch (const std::bad_alloc&) {
    ThrowOutOfMemory(path);
  }
}

}  // namespace tesk_audio
