#include "tests/soak/memory.h"

#include <malloc.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace soak {

long long HeapBytes() {
  const struct mallinfo2 info = ::mallinfo2();
  return static_cast<long long>(info.uordblks + info.hblkhd);
}

namespace {

struct Pages {
  long long reserved = 0;
  long long resident = 0;
};

Pages ReadPages() {
  Pages pages;
  std::ifstream("/proc/self/statm") >> pages.reserved >> pages.resident;
  return pages;
}

}  // namespace

long long ResidentBytes() {
  // What was freed may stay with the heap, with the registry's nodes of an hour in a vamp among it.
  ::malloc_trim(0);
  return ReadPages().resident * ::sysconf(_SC_PAGESIZE);
}

long long AddressBytes() {
  return ReadPages().reserved * ::sysconf(_SC_PAGESIZE);
}

int CountThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<int>(std::distance(begin(tasks), end(tasks)));
}

}  // namespace soak
