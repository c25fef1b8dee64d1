#include "reference_suite/audio/decode/out_of_memory.h"

#include <new>

#include "reference_suite/audio/text/shown_path.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

const char* const kText = "there is not enough memory to decode the audio. Close other programs.";
// Made while there is memory; copying it needs none.
const TESKAudioError kReady(kText);

}  // namespace

void ThrowOutOfMemory(const std::string& path) {
  std::string text;
  try {
    text = ShownPath(path) + ": " + kText;
    throw TESKAudioError(text);
  } catch (const std::bad_alloc&) {
    throw kReady;
  }
}

}  // namespace tesk_audio
