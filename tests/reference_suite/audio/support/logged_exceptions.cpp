#include "tests/reference_suite/audio/support/logged_exceptions.h"

#include <mutex>
#include <utility>

#include "suite/core/tesk_log_exception.h"

namespace {

std::mutex mutex;
std::string messages;

}  // namespace

void TeskLogException(const std::string& message, const std::string& sourceFile, int /*line*/) {
  const std::lock_guard lock(mutex);
  messages += sourceFile + ": " + message + "\n";
}

namespace logged_exceptions {

std::string Take() {
  const std::lock_guard lock(mutex);
  return std::exchange(messages, "");
}

}  // namespace logged_exceptions
