#include "tests/support/deleter_clock.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace test_support::deleter_clock {

namespace {

std::mutex mutex;
std::condition_variable changed;
bool held = false;
unsigned seconds = 0;  // that have passed since they are held
unsigned sleeps = 0;   // that have begun
unsigned asleep = 0;   // threads, while they are held
unsigned lastSleep = 0;

void Sleep(unsigned duration) {
  std::unique_lock lock(mutex);
  ++sleeps;
  lastSleep = duration;
  if (!held) {
    changed.notify_all();
    lock.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return;
  }
  const unsigned begin = seconds;
  ++asleep;
  changed.notify_all();
  changed.wait(lock, [&] { return !held || seconds != begin; });
  --asleep;
}

}  // namespace

void Hold() {
  const std::lock_guard lock(mutex);
  held = true;
}

void PassOneSecond() {
  std::unique_lock lock(mutex);
  // Sleeps of earlier deleters do not count: this one may not have come to its first yet.
  changed.wait(lock, [] { return asleep != 0; });
  const unsigned begun = sleeps;
  ++seconds;
  changed.notify_all();
  changed.wait(lock, [&] { return sleeps != begun; });
}

void LetGo() {
  const std::lock_guard lock(mutex);
  held = false;
  changed.notify_all();
}

unsigned GetLastSleep() {
  const std::lock_guard lock(mutex);
  return lastSleep;
}

}  // namespace test_support::deleter_clock

extern "C" unsigned sleep(unsigned duration) {
  test_support::deleter_clock::Sleep(duration);
  return 0;
}
