#include "tests/support/segment_settings.h"

namespace test_support {

tesk_audio::DecodingSettings decodingSettings;

}  // namespace test_support

namespace tesk_audio {

DecodingSettings GetDecodingSettings() {
  return test_support::decodingSettings;
}

}  // namespace tesk_audio
