#include "host/session/long_wait.h"

#include <chrono>
#include <exception>
#include <utility>

namespace orbel::host {
namespace {

constexpr std::chrono::milliseconds kNoticeable{250};

}  // namespace

LongWait::LongWait(const Say& say, std::string text) : say_(say), text_(std::move(text)) {
  if (!say_ || text_.empty()) return;
  try {
    thread_ = std::thread([this] { SayWhenItIsLong_(); });
  } catch (const std::exception&) {
    Say_();  // too early rather than never
  }
}

LongWait::~LongWait() {
  {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
  }
  ended_.notify_one();
  if (thread_.joinable()) thread_.join();
}

void LongWait::SayWhenItIsLong_() {
  std::unique_lock lock(mutex_);
  if (!ended_.wait_for(lock, kNoticeable, [this] { return hasEnded_; })) Say_();
}

void LongWait::Say_() noexcept {
  try {
    say_(text_);
  } catch (const std::exception&) {
    // Without memory for the words the wait goes on without them.
  }
}

}  // namespace orbel::host
