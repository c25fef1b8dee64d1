#include "reference_suite/audio/output/offline_output.h"

#include "reference_suite/audio/output/offline_registry.h"
#include "reference_suite/audio/output/offline_sample_output.h"

namespace tesk_audio {

bool StepOfflineOutput(StepReport* report, const FrameSink& sink) {
  OfflineSampleOutput* const output = OfflineRegistry::Instance().Last();
  return output != nullptr && output->Step(report, sink);
}

void MixOfflineTail(float* frames, std::size_t frameCount) {
  OfflineSampleOutput* const output = OfflineRegistry::Instance().Last();
  if (output != nullptr) output->MixTail(frames, frameCount);
}

std::size_t GetOfflineTailFrames() {
  OfflineSampleOutput* const output = OfflineRegistry::Instance().Last();
  return output == nullptr ? 0 : output->GetTailFrames();
}

unsigned GetOfflineChannelCount() {
  OfflineSampleOutput* const output = OfflineRegistry::Instance().Last();
  return output == nullptr ? 0 : output->GetChannelCount();
}

double GetOfflineSampleRateHz() {
  OfflineSampleOutput* const output = OfflineRegistry::Instance().Last();
  return output == nullptr ? 0.0 : output->GetSampleRateHz();
}

}  // namespace tesk_audio
