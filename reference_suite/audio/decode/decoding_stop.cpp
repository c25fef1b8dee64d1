#include "reference_suite/audio/decode/decoding_stop.h"

#include <atomic>

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

}  // namespace tesk_audio
