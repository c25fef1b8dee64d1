#include "host/session/long_wait.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace orbel::host {
namespace {

constexpr std::chrono::milliseconds kNoticeable{250};

}  // namespace

LongWait::LongWait(const Say& say, std::string text) : say_(say), text_(std::move(text)) {
  if (!say_ || text_.empty()) return;
  try {
    thread_ = std::thread([this] { SayWhenItIsLong_(); });
  } catch (const std::system_error&) {
    say_(text_);  // too early rather than never
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
  if (!ended_.wait_for(lock, kNoticeable, [this] { return hasEnded_; })) say_(text_);
}

}  // namespace orbel::host
