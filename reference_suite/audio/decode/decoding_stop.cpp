#include "reference_suite/audio/decode/decoding_stop.h"

#include <atomic>

#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

std::atomic<int> stops{0};

}  // namespace

DecodingStop::DecodingStop() {
  ++stops;
}

DecodingStop::~DecodingStop() {
  --stops;
}

bool DecodingStop::IsWanted() {
  return stops > 0;
}

void RequireWanted(const std::string& file) {
  if (DecodingStop::IsWanted())
    throw TESKAudioError(file + ": not decoded to its end: the show has been closed.");
}

}  // namespace tesk_audio
