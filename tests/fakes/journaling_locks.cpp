#include "tests/fakes/journaling_locks.h"

#include <map>
#include <optional>

#include "tests/fakes/journal.h"
#include "tests/support/observed_locks.h"

namespace {

// By name, while this thread is watched.
thread_local std::optional<std::map<std::string, int>> levels;

}  // namespace

namespace fakes::locks {

Journaling::Journaling() {
  levels.emplace();
}

Journaling::~Journaling() {
  levels.reset();
}

}  // namespace fakes::locks

namespace test_support::observed_locks {

void Made(const std::string& /*name*/) {}

void Taken(const std::string& name, const pthread_mutex_t* /*mutex*/) {
  if (levels && ++(*levels)[name] == 1) fakes::Write("+" + name);
}

void GivenUp(const std::string& name, const pthread_mutex_t* /*mutex*/) {
  if (levels && --(*levels)[name] == 0) fakes::Write("-" + name);
}

}  // namespace test_support::observed_locks
