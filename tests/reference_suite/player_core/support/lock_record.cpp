#include "tests/reference_suite/player_core/support/lock_record.h"

#include <algorithm>
#include <mutex>

#include "tests/support/observed_locks.h"

namespace test_support::locks {

namespace {

std::mutex mutex;
std::set<std::pair<std::string, std::string>> nestings;
thread_local std::vector<std::string> held;

}  // namespace

std::vector<std::string> GetHeld() {
  return held;
}

std::set<std::pair<std::string, std::string>> GetNestings() {
  const std::lock_guard guard(mutex);
  return nestings;
}

void Forget() {
  const std::lock_guard guard(mutex);
  nestings.clear();
}

}  // namespace test_support::locks

namespace test_support::observed_locks {

void Made(const std::string& /*name*/) {}

void Taken(const std::string& name, const pthread_mutex_t* /*mutex*/) {
  using namespace locks;
  if (std::find(held.begin(), held.end(), name) == held.end()) {
    const std::lock_guard guard(mutex);
    for (const std::string& outer : held) nestings.emplace(outer, name);
  }
  held.push_back(name);
}

void GivenUp(const std::string& name, const pthread_mutex_t* /*mutex*/) {
  using locks::held;
  const auto last = std::find(held.rbegin(), held.rend(), name);
  if (last != held.rend()) held.erase(std::next(last).base());
}

}  // namespace test_support::observed_locks
