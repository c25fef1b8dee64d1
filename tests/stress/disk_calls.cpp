// __wrap_pread stands in for the program's pread, and __real_pread is the system's.
#include "tests/stress/disk_calls.h"

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <random>
#include <thread>

namespace stress::disk {

namespace {

constexpr std::size_t kPiece = 8192;
std::atomic<unsigned> slowness{0};
std::atomic<unsigned> failures{0};
std::atomic<unsigned> seeds{1};
std::atomic<unsigned> readers{0};
std::atomic<unsigned> counting{1};

unsigned Random() {
  thread_local std::minstd_rand random(++seeds);
  return static_cast<unsigned>(random());
}

void CountThisThread() {
  thread_local unsigned counted = 0;
  const unsigned now = counting;
  if (counted != now) ++readers;
  counted = now;
}

}  // namespace

void SetSlowness(unsigned microseconds) {
  slowness = microseconds;
}

void SetFailures(unsigned oneIn) {
  failures = oneIn;
}

unsigned TakeReaders() {
  ++counting;
  return readers.exchange(0);
}

}  // namespace stress::disk

extern "C" {

ssize_t __real_pread(int descriptor, void* bytes, size_t count, off_t offset);

ssize_t __wrap_pread(int descriptor, void* bytes, size_t count, off_t offset) {
  namespace disk = stress::disk;
  disk::CountThisThread();
  const unsigned slowness = disk::slowness;
  if (slowness > 0) std::this_thread::sleep_for(std::chrono::microseconds(disk::Random() % slowness));
  const unsigned failures = disk::failures;
  if (failures > 0 && disk::Random() % failures == 0) {
    errno = EIO;
    return -1;
  }
  return __real_pread(descriptor, bytes, std::min(count, disk::kPiece), offset);
}
}
