#include "reference_suite/audio/decode/available_memory.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>

namespace tesk_audio {

namespace {

constexpr unsigned long long kUnknown = std::numeric_limits<unsigned long long>::max();

unsigned long long MachineBytes() {
  std::ifstream info("/proc/meminfo");
  std::string name;
  while (info >> name) {
    unsigned long long kibibytes = 0;
    if (name == "MemAvailable:" && info >> kibibytes) return kibibytes * 1024;
    info.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return kUnknown;
}

// A container's own limit; "max", which is no number, when there is none.
unsigned long long ContainerBytes() {
  unsigned long long limit = 0;
  unsigned long long used = 0;
  if (!(std::ifstream("/sys/fs/cgroup/memory.max") >> limit)) return kUnknown;
  if (!(std::ifstream("/sys/fs/cgroup/memory.current") >> used)) return kUnknown;
  return limit > used ? limit - used : 0;
}

}  // namespace

unsigned long long AvailableMemoryBytes() {
  return std::min(MachineBytes(), ContainerBytes());
}

}  // namespace tesk_audio
