#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

struct OggStream {
  std::uint32_t serial = 1;  // given and not drawn, so that the same sound gives the same bytes
  std::string title;
};

// The sound as an Ogg Vorbis file that decodes to exactly as many frames.
// Throws DemoError when the encoder refuses.
std::vector<std::uint8_t> EncodeOggVorbis(const StereoSound& sound, const OggStream& stream);

}  // namespace orbel::host::demo
