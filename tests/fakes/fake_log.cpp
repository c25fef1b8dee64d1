#include "tests/fakes/fake_log.h"

#include <mutex>
#include <new>
#include <utility>

#include "suite/core/tesk_log_exception.h"

namespace fakes {

namespace {

std::mutex mutex;
std::vector<LogEntry> entries;
bool failing = false;

}  // namespace

std::vector<LogEntry> TakeLogEntries() {
  const std::lock_guard lock(mutex);
  return std::exchange(entries, {});
}

void FailLogging(bool fail) {
  const std::lock_guard lock(mutex);
  failing = fail;
}

}  // namespace fakes

void TeskLogException(const std::string& message, const std::string& sourceFile, int line) {
  const std::lock_guard lock(fakes::mutex);
  if (fakes::failing) throw std::bad_alloc();
  fakes::entries.push_back({message, sourceFile, line});
}
