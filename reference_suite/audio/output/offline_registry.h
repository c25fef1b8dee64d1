#pragma once

#include <vector>

#include "exc/lock/lockable.h"

namespace tesk_audio {

class OfflineSampleOutput;

// The offline outputs that exist, so that a host finds the one that its player made. Threads: ANY.
class OfflineRegistry : public exc::Lockable {
 public:
  static OfflineRegistry& Instance();
  ~OfflineRegistry() override;

  void Add(OfflineSampleOutput* output);
  void Remove(OfflineSampleOutput* output);
  // The youngest; null when there is none.
  OfflineSampleOutput* Last();

 private:
  OfflineRegistry();

  std::vector<OfflineSampleOutput*> outputs_ EXC_GUARDED_BY(this);
};

}  // namespace tesk_audio
