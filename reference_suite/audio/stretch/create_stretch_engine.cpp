// The factory stands alone in its object, so that a program can put another in its place.
#include <algorithm>
#include <vector>

#include "reference_suite/audio/stretch/rubber_band_engine.h"
#include "reference_suite/audio/stretch/stretch_engine.h"

namespace tesk_audio {

std::unique_ptr<StretchEngine> CreateStretchEngine(StretchQuality quality, double rateHz, unsigned channels) {
  auto engine = std::make_unique<RubberBandEngine>(quality, rateHz, channels);
  std::vector<float> silence(StretchEngine::kMostFrames * channels, 0.0F);
  for (const StretchFactors factors : {StretchFactors{1.0, 1}, {0.25, 0}, {4.0, 0}, {4.0, -12}, {4.0, -24}}) {
    engine->Begin(factors);
    for (std::size_t required = engine->GetRequired(); required > 0; required = engine->GetRequired()) {
      const std::size_t count = std::min(required, StretchEngine::kMostFrames);
      engine->Process(silence.data(), count, false);
      if (engine->Retrieve(silence.data(), StretchEngine::kMostFrames) > 0) break;
    }
  }
  return engine;
}

}  // namespace tesk_audio
