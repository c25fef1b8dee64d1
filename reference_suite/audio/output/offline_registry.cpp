#include "reference_suite/audio/output/offline_registry.h"

#include <algorithm>

#include "exc/lock/scope_lock.h"

namespace tesk_audio {

OfflineRegistry::OfflineRegistry() : exc::Lockable("OfflineRegistry") {}

OfflineRegistry::~OfflineRegistry() = default;

OfflineRegistry& OfflineRegistry::Instance() {
  static OfflineRegistry registry;
  return registry;
}

void OfflineRegistry::Add(OfflineSampleOutput* output) {
  exc::ScopeLock lock(*this);
  outputs_.push_back(output);
}

void OfflineRegistry::Remove(OfflineSampleOutput* output) {
  exc::ScopeLock lock(*this);
  outputs_.erase(std::find(outputs_.begin(), outputs_.end(), output));
}

OfflineSampleOutput* OfflineRegistry::Last() {
  exc::ScopeLock lock(*this);
  return outputs_.empty() ? nullptr : outputs_.back();
}

}  // namespace tesk_audio
