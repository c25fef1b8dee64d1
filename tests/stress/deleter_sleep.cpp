// The seconds that a deleter thread sleeps are real ones, because what it frees may be in use until they have
// passed. Only whoever waits for its end does not wait for the second to pass.
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "tests/support/lock_order/lock_order.h"

namespace {

std::mutex mutex;
std::condition_variable wanted;
std::vector<pthread_t> joined;  // threads that are waited for

bool IsJoined(pthread_t thread) {
  return std::any_of(joined.begin(), joined.end(),
                     [=](pthread_t other) { return pthread_equal(thread, other) != 0; });
}

void Join(pthread_t thread, bool begins) {
  const std::lock_guard lock(mutex);
  if (begins) {
    joined.push_back(thread);
    wanted.notify_all();
  } else {
    std::erase_if(joined, [=](pthread_t other) { return pthread_equal(thread, other) != 0; });
  }
}

[[maybe_unused]] const bool isHooked = [] {
  test_support::lock_order::OnJoin(Join);
  return true;
}();

}  // namespace

extern "C" unsigned sleep(unsigned seconds) {
  std::unique_lock lock(mutex);
  wanted.wait_for(lock, std::chrono::seconds(seconds), [] { return IsJoined(pthread_self()); });
  return 0;
}
