#include "reference_suite/audio/decode/open_decoder.h"

#include <sys/mman.h>

#include <new>
#include <string>

#include "reference_suite/audio/decode/sndfile_decoder.h"
#include "reference_suite/audio/decode/vorbis_decoder.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

// Long enough for the first pages of a stream that carries pictures or text beside its audio.
constexpr std::size_t kHeadBytes = 4096;
// What a library takes while it opens a file, several times over.
constexpr std::size_t kMarginBytes = std::size_t{8} << 20;

// The libraries do not look whether they were given the memory that they ask for, and would end the program.
void AskForAMarginOfMemory() {
  void* const margin =
      ::mmap(nullptr, kMarginBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (margin == MAP_FAILED) throw std::bad_alloc();
  ::munmap(margin, kMarginBytes);
}

}  // namespace

std::unique_ptr<AudioDecoder> OpenDecoder(AudioFile& file) {
  const std::string head = file.Head(kHeadBytes);
  file.ThrowIfReadFailed();
  if (head.empty()) {
    throw AudioSampleContentError(file.Name() + ": the file is empty. Copy it again from where it came.");
  }
  AskForAMarginOfMemory();
  const bool isOgg = head.compare(0, 4, "OggS") == 0;
  if (isOgg && head.find("\x01vorbis") != std::string::npos) return std::make_unique<VorbisDecoder>(file);
  return std::make_unique<SndfileDecoder>(file, isOgg);
}

void ThrowUndecodable(bool isOgg, const std::string& message) {
  if (isOgg) throw OggVorbisDecodeError(message);
  throw AudioSampleContentError(message);
}

}  // namespace tesk_audio
