#pragma once

#include "reference_suite/audio/decode/decoding_settings.h"

namespace test_support {

// How the program that links segment_settings.cpp decodes: as every other one until a test says otherwise.
// Changed only while nothing is decoded. However short a segment may be, it has one block of the store, which
// holds 524,288 samples of all channels together.
extern tesk_audio::DecodingSettings decodingSettings;

}  // namespace test_support
