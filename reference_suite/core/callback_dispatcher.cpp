#include "suite/core/callback_dispatcher.h"

#include <new>
#include <utility>

#include "suite/core/callback_guard.h"

namespace notify {

namespace {

// The notifications in progress on this thread, innermost first: a function may remove a listener, and must
// not wait for the notification that it is called from.
struct Frame {
  const CallbackDispatcher* dispatcher;
  const Frame* outer;
};
thread_local const Frame* innermost = nullptr;

class FrameScope {
 public:
  explicit FrameScope(const CallbackDispatcher* dispatcher) : frame_{dispatcher, innermost} {
    innermost = &frame_;
  }
  ~FrameScope() { innermost = frame_.outer; }
  FrameScope(const FrameScope&) = delete;
  FrameScope& operator=(const FrameScope&) = delete;

 private:
  Frame frame_;
};

bool IsNotifying(const CallbackDispatcher* dispatcher) {
  for (const Frame* frame = innermost; frame != nullptr; frame = frame->outer) {
    if (frame->dispatcher == dispatcher) return true;
  }
  return false;
}

}  // namespace

CallbackDispatcher callbackDispatcher;

CallbackDispatcher::CallbackDispatcher() : lock_("CallbackDispatcher"), listeners_(new Listeners) {}

CallbackDispatcher::~CallbackDispatcher() {
  delete listeners_.load();
}

void CallbackDispatcher::Publish_(Listeners listeners) {
  auto table = std::make_unique<Listeners>(std::move(listeners));
  retired_.reserve(retired_.size() + 1);
  retired_.emplace_back(listeners_.exchange(table.release()));
  if (inFlight_ == 0) retired_.clear();
}

void CallbackDispatcher::Add(void* listener, const std::string& eventName, Function function) {
  exc::ScopeLock lock(lock_);
  Listeners listeners = *listeners_;
  listeners[listener][eventName].push_back(std::move(function));
  Publish_(std::move(listeners));
}

void CallbackDispatcher::Remove(void* listener) {
  exc::ScopeLock lock(lock_);
  bool isPublished = false;
  try {
    Listeners listeners = *listeners_;
    listeners.erase(listener);
    Publish_(std::move(listeners));
    isPublished = true;
  } catch (const std::bad_alloc&) {
    // No memory for another table: this one is changed below, when nobody reads it any more.
    if (IsNotifying(this)) throw;
  }
  if (IsNotifying(this)) return;
  while (inFlight_ > 0) condition_.WaitWhileLocked(lock);
  if (!isPublished) const_cast<Listeners*>(listeners_.load())->erase(listener);
  retired_.clear();
}

void CallbackDispatcher::Notify(const std::string& eventName, void* argument) {
  CallbackGuard guard(lock_, inFlight_, condition_);
  FrameScope frame(this);
  // The table is looked up anew for each listener, so that one that a function has removed is not called.
  const Listeners* listeners = listeners_;
  auto next = listeners->begin();
  while (next != listeners->end()) {
    void* const listener = next->first;
    const FunctionsByEvent functions = next->second;
    const auto found = functions.find(eventName);
    if (found != functions.end()) {
      for (const Function& stored : found->second) {
        const Function function = stored;
        function(argument);
      }
    }
    listeners = listeners_;
    next = listeners->upper_bound(listener);
  }
}

}  // namespace notify
