#pragma once

#include "reference_suite/audio/decode/audio_decoder.h"
#include "reference_suite/audio/decode/decode_content.h"
#include "reference_suite/audio/decode/intake.h"

namespace tesk_audio {

// Whether the file is long enough for threads of its own.
bool IsLong(const DecodedFormat& format, const DecodeRequest& request);

// Decodes the whole file into `intake`. A long one is cut into as many segments as request.places has: the
// first is decoded here with `decoder`, each other one on a thread with a decoder of its own. Neighbours
// overlap, and are joined only when they agree there to the bit and nothing odd was met anywhere; in every
// other case `decoder` goes on alone to the end, so that samples, errors and warnings are always those of
// decoding from first to last.
void DecodeAll(AudioDecoder& decoder, Intake& intake, const DecodeRequest& request);

}  // namespace tesk_audio
