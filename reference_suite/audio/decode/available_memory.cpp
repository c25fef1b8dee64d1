#include "reference_suite/audio/decode/available_memory.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <limits>

namespace tesk_audio {

namespace {

constexpr unsigned long long kUnknown = std::numeric_limits<unsigned long long>::max();

// The number behind `name` in a list of names and numbers, one a line; `otherwise` where it does not stand.
unsigned long long ValueOf(const std::string& name, const std::string& path, unsigned long long otherwise) {
  std::ifstream list(path);
  std::string found;
  while (list >> found) {
    unsigned long long value = 0;
    if (found == name && list >> value) return value;
    list.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return otherwise;
}

unsigned long long Difference(unsigned long long limit, unsigned long long used) {
  return limit > used ? limit - used : 0;
}

unsigned long long MachineBytes() {
  const unsigned long long kibibytes = ValueOf("MemAvailable:", "/proc/meminfo", kUnknown);
  return kibibytes == kUnknown ? kUnknown : kibibytes * 1024;
}

unsigned long long AddressSpaceBytes() {
  rlimit limit{};
  unsigned long long pages = 0;
  if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kUnknown;
  if (!(std::ifstream("/proc/self/statm") >> pages)) return kUnknown;
  return Difference(limit.rlim_cur, pages * static_cast<unsigned long long>(::sysconf(_SC_PAGESIZE)));
}

// The limit is "max", which is no number, when there is none.
unsigned long long BytesLeftOf(const std::string& group) {
  unsigned long long limit = 0;
  unsigned long long used = 0;
  if (!(std::ifstream(group + "/memory.max") >> limit)) return kUnknown;
  if (!(std::ifstream(group + "/memory.current") >> used)) return kUnknown;
  // Files that were read and are kept in case: counted as used, and given back before anything is refused.
  return Difference(limit, Difference(used, ValueOf("inactive_file", group + "/memory.stat", 0)));
}

// "/outer/inner"; nothing for the outermost.
std::string OwnGroup(std::istream& groups) {
  const std::string prefix = "0::/";
  for (std::string line; std::getline(groups, line);) {
    if (line.compare(0, prefix.size(), prefix) == 0) return line.substr(prefix.size() - 1);
  }
  return "";
}

}  // namespace

unsigned long long GroupMemoryBytes(std::istream& groups, const std::string& root) {
  unsigned long long bytes = BytesLeftOf(root);
  for (std::string group = OwnGroup(groups); !group.empty(); group.erase(group.rfind('/'))) {
    bytes = std::min(bytes, BytesLeftOf(root + group));
  }
  return bytes;
}

unsigned long long AvailableMemoryBytes() {
  std::ifstream groups("/proc/self/cgroup");
  return std::min({MachineBytes(), AddressSpaceBytes(), GroupMemoryBytes(groups, "/sys/fs/cgroup")});
}

}  // namespace tesk_audio
