#include "suite/core/callback_dispatcher.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "exc/lock/scope_lock.h"
#include "suite/core/callback_guard.h"
#include "suite/core/notification_names.h"

namespace {

using notify::CallbackDispatcher;

TEST(CallbackDispatcher, CallsListenersInKeyOrderAndFunctionsInTheirOrder) {
  CallbackDispatcher dispatcher;
  int keys[2];
  std::string calls;
  dispatcher.Add(&keys[1], "end", [&](void*) { calls += "c"; });
  dispatcher.Add(&keys[0], "end", [&](void*) { calls += "a"; });
  dispatcher.Add(&keys[0], "other", [&](void*) { calls += "x"; });
  dispatcher.Add(&keys[0], "end", [&](void*) { calls += "b"; });
  dispatcher.Notify("end", nullptr);
  EXPECT_EQ(calls, "abc");
}

TEST(CallbackDispatcher, HandsTheArgumentThrough) {
  CallbackDispatcher dispatcher;
  int argument = 0;
  dispatcher.Add(&dispatcher, "event", [](void* p) { *static_cast<int*>(p) = 7; });
  dispatcher.Notify("event", &argument);
  EXPECT_EQ(argument, 7);
}

TEST(CallbackDispatcher, NobodyListeningIsFine) {
  CallbackDispatcher dispatcher;
  dispatcher.Notify("event", nullptr);
  int key = 0;
  dispatcher.Remove(&key);
  dispatcher.Notify("event", nullptr);
}

TEST(CallbackDispatcher, ARemovedListenerIsNotCalledAgain) {
  CallbackDispatcher dispatcher;
  int calls = 0;
  dispatcher.Add(&calls, "event", [&](void*) { ++calls; });
  dispatcher.Notify("event", nullptr);
  dispatcher.Remove(&calls);
  dispatcher.Notify("event", nullptr);
  EXPECT_EQ(calls, 1);
}

TEST(CallbackDispatcher, AFunctionMayRemoveAnotherListenerWhichIsThenNotCalled) {
  CallbackDispatcher dispatcher;
  int keys[2];
  int calls = 0;
  dispatcher.Add(&keys[0], "event", [&](void*) { dispatcher.Remove(&keys[1]); });
  dispatcher.Add(&keys[1], "event", [&](void*) { ++calls; });
  dispatcher.Notify("event", nullptr);
  EXPECT_EQ(calls, 0);
}

TEST(CallbackDispatcher, AFunctionMayRemoveItsOwnListenerWithoutWaiting) {
  CallbackDispatcher dispatcher;
  int calls = 0;
  dispatcher.Add(&calls, "event", [&](void*) {
    ++calls;
    dispatcher.Remove(&calls);
  });
  dispatcher.Notify("event", nullptr);
  dispatcher.Notify("event", nullptr);
  EXPECT_EQ(calls, 1);
}

TEST(CallbackDispatcher, AFunctionMayAddAListenerAndNotifyAgain) {
  CallbackDispatcher dispatcher;
  int keys[2];
  int calls = 0;
  dispatcher.Add(&keys[0], "event", [&](void*) {
    dispatcher.Add(&keys[1], "inner", [&](void*) { ++calls; });
    dispatcher.Notify("inner", nullptr);
  });
  dispatcher.Notify("event", nullptr);
  EXPECT_EQ(calls, 1);
}

TEST(CallbackDispatcher, TheLockIsNotHeldWhileFunctionsRun) {
  CallbackDispatcher dispatcher;
  int other = 0;
  dispatcher.Add(&dispatcher, "event",
                 [&](void*) { std::thread([&] { dispatcher.Add(&other, "other", [](void*) {}); }).join(); });
  dispatcher.Notify("event", nullptr);
}

TEST(CallbackDispatcher, RemoveWaitsForANotificationInFlight) {
  CallbackDispatcher dispatcher;
  std::atomic<int> calls{0};
  std::atomic<bool> go{false};
  std::atomic<bool> hasReturned{false};
  dispatcher.Add(&dispatcher, "event", [&](void*) {
    if (++calls > 1) return;
    while (!go) std::this_thread::yield();
  });
  std::thread notifier([&] { dispatcher.Notify("event", nullptr); });
  while (calls == 0) std::this_thread::yield();
  std::thread remover([&] {
    dispatcher.Remove(&dispatcher);
    hasReturned = true;
  });
  // Once the listener is out of the table only the call in flight can hold Remove back.
  for (int before = 0; before != calls;) {
    before = calls;
    dispatcher.Notify("event", nullptr);
  }
  for (int i = 0; i < 100; ++i) {
    EXPECT_FALSE(hasReturned);
    std::this_thread::yield();
  }
  go = true;
  remover.join();
  notifier.join();
}

TEST(CallbackDispatcher, AThrowingFunctionLeavesNothingInFlight) {
  CallbackDispatcher dispatcher;
  dispatcher.Add(&dispatcher, "event", [](void*) { throw std::runtime_error("no"); });
  EXPECT_THROW(dispatcher.Notify("event", nullptr), std::runtime_error);
  dispatcher.Remove(&dispatcher);  // would wait for ever
}

TEST(CallbackDispatcher, ManyThreadsNotifyAddAndRemove) {
  constexpr int kOwnNotifications = 3;
  CallbackDispatcher dispatcher;
  std::atomic<int> throughout{0};
  dispatcher.Add(&throughout, "event", [&](void*) { ++throughout; });
  std::atomic<bool> stop{false};
  std::atomic<int> notifications{0};
  std::vector<std::thread> notifiers;
  for (int i = 0; i < 2; ++i) {
    notifiers.emplace_back([&] {
      while (!stop) {
        dispatcher.Notify("event", nullptr);
        ++notifications;
      }
    });
  }
  int ownNotifications = 0;
  for (int i = 0; i < 100; ++i) {
    // Destroyed after Remove: an address sanitizer sees a call that comes later.
    auto passing = std::make_unique<std::atomic<int>>(0);
    const int before = throughout;
    dispatcher.Add(passing.get(), "event", [c = passing.get()](void*) { ++*c; });
    for (int k = 0; k < kOwnNotifications; ++k) dispatcher.Notify("event", nullptr);
    ownNotifications += kOwnNotifications;
    dispatcher.Remove(passing.get());
    const int heard = *passing;
    EXPECT_GE(heard, kOwnNotifications) << "all of them while it was there";
    // One on its way when the counting began may have called the other already: one a notifier.
    EXPECT_LE(heard, throughout - before + 2) << "each once";
    const int later = notifications + 4;
    while (notifications < later) std::this_thread::yield();
    EXPECT_EQ(*passing, heard) << "and none behind its removal";
  }
  stop = true;
  for (std::thread& thread : notifiers) thread.join();
  EXPECT_EQ(throughout, notifications + ownNotifications);
}

TEST(CallbackDispatcher, TheProcessHasOne) {
  int calls = 0;
  notify::callbackDispatcher.Add(&calls, notify::names::stopped_at_end_of_song, [&](void*) { ++calls; });
  notify::callbackDispatcher.Notify(notify::names::stopped_at_end_of_song, nullptr);
  notify::callbackDispatcher.Remove(&calls);
  EXPECT_EQ(calls, 1);
}

TEST(CallbackGuard, CountsWhileItLivesAndHoldsTheLockOnlyForThat) {
  exc::RLockable lock("test");
  exc::Condition condition;
  int counter = 0;
  {
    notify::CallbackGuard outer(lock, counter, condition);
    EXPECT_EQ(counter, 1);
    std::thread([&] { exc::ScopeLock free(lock); }).join();
    {
      notify::CallbackGuard inner(lock, counter, condition);
      EXPECT_EQ(counter, 2);
    }
    EXPECT_EQ(counter, 1);
  }
  EXPECT_EQ(counter, 0);
}

TEST(CallbackGuard, TheLastOneOutWakesEveryoneWhoWaits) {
  exc::RLockable lock("test");
  exc::Condition condition;
  int counter = 0;
  int waiting = 0;
  auto guard = std::make_unique<notify::CallbackGuard>(lock, counter, condition);
  std::vector<std::thread> waiters;
  for (int i = 0; i < 2; ++i) {
    waiters.emplace_back([&] {
      exc::ScopeLock scope(lock);
      ++waiting;
      while (counter > 0) condition.WaitWhileLocked(scope);
    });
  }
  for (bool all = false; !all;) {
    exc::ScopeLock scope(lock);
    all = waiting == 2;
  }
  guard.reset();
  for (std::thread& waiter : waiters) waiter.join();
}

}  // namespace
