#include "tests/support/lock_order/lock_order.h"

#include <execinfo.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "tests/support/observed_locks.h"

namespace test_support::lock_order {

namespace {

using Mask = std::uint64_t;
constexpr int kNames = 63;
constexpr Mask kUnseen = ~Mask{0};  // no thread holds the locks of all 64 bits
constexpr auto kRelaxed = std::memory_order_relaxed;

// ---- names: a slot is filled once, before the first lock of that name exists --------------------------
std::mutex registering;
std::array<std::atomic<const std::string*>, kNames> names{};

int NumberOf(const std::string& name) {
  for (int id = 0; id < kNames; ++id) {
    const std::string* const known = names[static_cast<std::size_t>(id)].load(std::memory_order_acquire);
    if (known == nullptr) return -1;
    if (*known == name) return id;
  }
  return -1;
}

const std::string& NameOf(std::size_t id) {
  return *names[id].load(std::memory_order_acquire);
}

// ---- what was seen: for each pair, the locks that were held every time --------------------------------
struct Seen {
  std::array<std::array<std::atomic<Mask>, kNames>, kNames> nestings;
  std::array<std::array<std::atomic<bool>, kNames>, kNames> waitsHolding;  // [held][waited with]
  std::array<std::atomic<bool>, kNames> waitsHeldTwice;
  std::array<std::atomic<bool>, kNames> joinsHolding;
  std::array<std::atomic<bool>, kNames> otherWaitsHolding;
  std::array<std::array<std::atomic<bool>, kNames>, kNames> expected;
  std::atomic<bool> expects;
};
Seen seen;
std::once_flag prepared;

void Prepare() {
  std::call_once(prepared, [] {
    for (auto& row : seen.nestings) {
      for (auto& cell : row) cell.store(kUnseen, kRelaxed);
    }
  });
}

using JoinHook = void (*)(pthread_t thread, bool begins);
std::atomic<JoinHook> joinHook{nullptr};

// ---- what this thread holds ---------------------------------------------------------------------------
struct Held {
  int id;
  int times;
  const pthread_mutex_t* mutex;
};
constexpr int kDeepest = 16;
struct HeldByThread {
  std::array<Held, kDeepest> locks;
  int count;
};
thread_local HeldByThread held{};

Held* Find(const pthread_mutex_t* mutex) {
  for (int i = 0; i < held.count; ++i) {
    if (held.locks[static_cast<std::size_t>(i)].mutex == mutex) {
      return &held.locks[static_cast<std::size_t>(i)];
    }
  }
  return nullptr;
}

template <typename Function>
void ForEachHeld(Function function) {
  for (int i = 0; i < held.count; ++i) function(held.locks[static_cast<std::size_t>(i)]);
}

Mask Bit(int id) {
  return Mask{1} << static_cast<unsigned>(id);
}

void WriteStack() {
  std::array<void*, 64> frames{};
  const int depth = ::backtrace(frames.data(), static_cast<int>(frames.size()));
  ::backtrace_symbols_fd(frames.data(), depth, STDERR_FILENO);
}

[[noreturn]] void Abort(const char* why) {
  std::fprintf(stderr, "lock order: %s\n", why);
  WriteStack();
  std::abort();
}

void SawFirst(std::size_t outer, std::size_t inner) {
  if (!seen.expects.load(kRelaxed) || seen.expected[outer][inner].load(kRelaxed)) return;
  std::fprintf(stderr, "lock order: \"%s\" is taken while \"%s\" is held\n", NameOf(inner).c_str(),
               NameOf(outer).c_str());
  WriteStack();
}

}  // namespace

// Gives each name a number.
static void Register(const std::string& name) {
  Prepare();
  if (NumberOf(name) >= 0) return;
  const std::lock_guard lock(registering);
  if (NumberOf(name) >= 0) return;
  for (auto& slot : names) {
    if (slot.load(kRelaxed) != nullptr) continue;
    slot.store(new std::string(name), std::memory_order_release);  // for the life of the process
    return;
  }
  Abort("more names than there is room for");
}

static void NoteAll(std::array<std::atomic<bool>, kNames>* badlyHeld) {
  ForEachHeld([&](const Held& lock) {
    const bool isNew = !(*badlyHeld)[static_cast<std::size_t>(lock.id)].exchange(true, kRelaxed);
    if (isNew && seen.expects.load(kRelaxed)) WriteStack();
  });
}

void WaitsWith(const pthread_mutex_t* mutex) {
  const Held* const own = Find(mutex);
  if (own == nullptr) return NoteAll(&seen.otherWaitsHolding);  // a mutex of the standard library's
  if (own->times > 1) seen.waitsHeldTwice[static_cast<std::size_t>(own->id)].store(true, kRelaxed);
  ForEachHeld([&](const Held& lock) {
    if (&lock == own) return;
    const bool isNew =
        !seen.waitsHolding[static_cast<std::size_t>(lock.id)][static_cast<std::size_t>(own->id)].exchange(
            true, kRelaxed);
    if (isNew && seen.expects.load(kRelaxed)) WriteStack();
  });
}

void Joins() {
  NoteAll(&seen.joinsHolding);
}

void OnJoin(void (*hook)(pthread_t thread, bool begins)) {
  joinHook.store(hook);
}

void CallJoinHook(pthread_t thread, bool begins) {
  if (const JoinHook hook = joinHook.load()) hook(thread, begins);
}

void Expect(const std::set<std::pair<std::string, std::string>>& pairs) {
  for (const auto& [outer, inner] : pairs) {
    Register(outer);
    Register(inner);
    seen.expected[static_cast<std::size_t>(NumberOf(outer))][static_cast<std::size_t>(NumberOf(inner))].store(
        true, kRelaxed);
  }
  seen.expects.store(true, kRelaxed);
}

void Reset() {
  Prepare();
  for (std::size_t i = 0; i < kNames; ++i) {
    for (std::size_t j = 0; j < kNames; ++j) {
      seen.nestings[i][j].store(kUnseen, kRelaxed);
      seen.waitsHolding[i][j].store(false, kRelaxed);
      seen.expected[i][j].store(false, kRelaxed);
    }
    seen.waitsHeldTwice[i].store(false, kRelaxed);
    seen.joinsHolding[i].store(false, kRelaxed);
    seen.otherWaitsHolding[i].store(false, kRelaxed);
  }
  seen.expects.store(false, kRelaxed);
}

std::vector<Nesting> GetNestings() {
  Prepare();
  std::vector<Nesting> all;
  for (std::size_t outer = 0; outer < kNames; ++outer) {
    for (std::size_t inner = 0; inner < kNames; ++inner) {
      const Mask mask = seen.nestings[outer][inner].load(kRelaxed);
      if (mask == kUnseen) continue;
      Nesting nesting{NameOf(outer), NameOf(inner), {}};
      for (std::size_t id = 0; id < kNames; ++id) {
        if (id != outer && (mask & Bit(static_cast<int>(id))) != 0) nesting.behind.insert(NameOf(id));
      }
      all.push_back(nesting);
    }
  }
  return all;
}

std::vector<std::string> GetBadWaits() {
  std::vector<std::string> all;
  for (std::size_t held_ = 0; held_ < kNames; ++held_) {
    for (std::size_t waited = 0; waited < kNames; ++waited) {
      if (!seen.waitsHolding[held_][waited].load(kRelaxed)) continue;
      all.push_back("a wait that gives up \"" + NameOf(waited) + "\" keeps \"" + NameOf(held_) + "\"");
    }
    if (seen.waitsHeldTwice[held_].load(kRelaxed)) {
      all.push_back("a wait gives up \"" + NameOf(held_) + "\" once, which is held more often");
    }
    if (seen.joinsHolding[held_].load(kRelaxed)) {
      all.push_back("a thread is joined while \"" + NameOf(held_) + "\" is held");
    }
    if (seen.otherWaitsHolding[held_].load(kRelaxed)) {
      all.push_back("a wait that gives up no named lock keeps \"" + NameOf(held_) + "\"");
    }
  }
  return all;
}

}  // namespace test_support::lock_order

namespace test_support::observed_locks {

using namespace lock_order;

void Made(const std::string& name) {
  Register(name);
}

void Taken(const std::string& name, const pthread_mutex_t* mutex) {
  if (Held* const already = Find(mutex)) {
    ++already->times;
    return;
  }
  const int id = NumberOf(name);
  if (id < 0 || held.count == kDeepest) Abort("a lock without a number, or too many at once");
  Mask all = 0;
  ForEachHeld([&](const Held& lock) { all |= Bit(lock.id); });
  ForEachHeld([&](const Held& lock) {
    const auto outer = static_cast<std::size_t>(lock.id);
    const auto inner = static_cast<std::size_t>(id);
    if (seen.nestings[outer][inner].fetch_and(all, kRelaxed) == kUnseen) SawFirst(outer, inner);
  });
  held.locks[static_cast<std::size_t>(held.count++)] = {id, 1, mutex};
}

void GivenUp(const std::string& /*name*/, const pthread_mutex_t* mutex) {
  Held* const lock = Find(mutex);
  if (lock == nullptr) Abort("a lock is given up by a thread that does not hold it");
  if (--lock->times > 0) return;
  *lock = held.locks[static_cast<std::size_t>(--held.count)];
}

}  // namespace test_support::observed_locks
