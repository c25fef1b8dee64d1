#include "reference_suite/audio/output/output_meters.h"

#include <atomic>
#include <mutex>

#include "reference_suite/audio/output/live_sample_output.h"

namespace tesk_audio {

namespace {

struct Registry {
  std::mutex mutex;  // held while meters are read, so that the output stays until then
  LiveSampleOutput* output = nullptr;
};

std::atomic<int> holders{0};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

void HoldLiveOutputs() {
  ++holders;
}

void ReleaseLiveOutputs() {
  --holders;
}

bool LiveOutputsAreHeld() {
  return holders > 0;
}

void RegisterLiveOutput(LiveSampleOutput* output) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  registry.output = output;
}

void UnregisterLiveOutput(LiveSampleOutput* output) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  if (registry.output == output) registry.output = nullptr;
}

bool ReadOutputMeters(OutputMeters* meters) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  if (registry.output == nullptr) return false;
  *meters = registry.output->ReadMeters();
  return true;
}

}  // namespace tesk_audio
