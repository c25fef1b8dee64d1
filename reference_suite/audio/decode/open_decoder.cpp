#include "reference_suite/audio/decode/open_decoder.h"

#include <string>

#include "reference_suite/audio/decode/sndfile_decoder.h"
#include "reference_suite/audio/decode/vorbis_decoder.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

// Long enough for the first pages of a stream that carries pictures or text beside its audio.
constexpr std::size_t kHeadBytes = 4096;
}  // namespace

std::unique_ptr<AudioDecoder> OpenDecoder(AudioFile& file) {
  const std::string head = file.Head(kHeadBytes);
  file.ThrowIfReadFailed();
  if (head.empty()) {
    throw AudioSampleContentError(file.Name() + ": the file is empty. Copy it again from where it came.");
  }
  const bool isOgg = head.compare(0, 4, "OggS") == 0;
  if (isOgg && head.find("\x01vorbis") != std::string::npos) return std::make_unique<VorbisDecoder>(file);
  return std::make_unique<SndfileDecoder>(file, isOgg);
}

void ThrowUndecodable(bool isOgg, const std::string& message) {
  if (isOgg) throw OggVorbisDecodeError(message);
  throw AudioSampleContentError(message);
}

}  // namespace tesk_audio
