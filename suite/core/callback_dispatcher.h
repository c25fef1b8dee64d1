#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "exc/condition/condition.h"
#include "exc/lock/rlockable.h"

namespace notify {

// Named events and the functions that want to hear of them, grouped by listener. Threads: ANY.
// The lock guards the table and the counter; it is not held while functions run, so a function may be called
// a last time while it is being removed by another thread: Remove waits for that.
class CallbackDispatcher {
 public:
  using Function = std::function<void(void*)>;

  CallbackDispatcher();
  ~CallbackDispatcher();
  CallbackDispatcher(const CallbackDispatcher&) = delete;
  CallbackDispatcher& operator=(const CallbackDispatcher&) = delete;

  // Functions of one listener and event are called in the order in which they were added.
  void Add(void* listener, const std::string& eventName, Function function);

  // Takes everything of `listener` out and returns when no notification is in flight any more, so that the
  // listener may be destroyed. From within a notification of the same thread it does not wait.
  void Remove(void* listener);

  // Calls every function stored for `eventName`, listener by listener in key order, on this thread.
  void Notify(const std::string& eventName, void* argument);

 private:
  using FunctionsByEvent = std::map<std::string, std::vector<Function>>;
  using Listeners = std::map<void*, FunctionsByEvent>;

  // Replaces the table. Those that notifications in flight may still walk are kept until none is.
  void Publish_(Listeners listeners) EXC_HOLDS(lock_);

  exc::RLockable lock_;
  // Owned. Replaced as a whole with the lock held, walked without it.
  std::atomic<const Listeners*> listeners_;
  std::vector<std::unique_ptr<const Listeners>> retired_ EXC_GUARDED_BY(lock_);
  int inFlight_ = 0;  // read and written with the lock held; CallbackGuard counts
  exc::Condition condition_;
};

// The one instance of the process.
extern CallbackDispatcher callbackDispatcher;

}  // namespace notify
