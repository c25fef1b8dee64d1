#include "tests/fakes/journal.h"

#include <mutex>
#include <utility>

namespace fakes {

namespace {

std::mutex mutex;
std::vector<std::string> entries;

}  // namespace

void Write(const std::string& entry) {
  const std::lock_guard lock(mutex);
  entries.push_back(entry);
}

std::vector<std::string> TakeJournal() {
  const std::lock_guard lock(mutex);
  return std::exchange(entries, {});
}

}  // namespace fakes
