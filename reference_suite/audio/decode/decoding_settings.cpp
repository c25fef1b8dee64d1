#include "reference_suite/audio/decode/decoding_settings.h"

namespace tesk_audio {

DecodingSettings GetDecodingSettings() {
  return {};
}

}  // namespace tesk_audio
