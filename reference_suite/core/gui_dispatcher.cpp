#include "suite/core/gui_dispatcher.h"

#include <algorithm>
#include <new>
#include <vector>

#include "exc/condition/condition.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "suite/core/tesk_log_exception.h"

namespace notify {

namespace {

// One listener in the table. Guarded by the table's lock.
struct Entry {
  GuiListener* listener = nullptr;
  int calls = 0;  // under way now
  bool isRemoved = false;

  bool IsOf(const GuiListener* other) const { return listener == other && !isRemoved; }
};

// The calls in progress on this thread, innermost first: a listener may take itself out while it is called.
struct Frame {
  const Entry* entry;
  const Frame* outer;
};
thread_local const Frame* innermost = nullptr;

bool IsCalledOnThisThread(const Entry& entry) {
  for (const Frame* frame = innermost; frame != nullptr; frame = frame->outer) {
    if (frame->entry == &entry) return true;
  }
  return false;
}

}  // namespace

// Sending allocates nothing: it walks a table that is replaced as a whole when listeners come and go.
struct GuiDispatcher::State {
  using Entries = std::vector<std::shared_ptr<Entry>>;

  exc::RLockable lock{"GuiDispatcher"};
  exc::Condition callEnded;
  std::shared_ptr<const Entries> entries EXC_GUARDED_BY(lock) = std::make_shared<const Entries>();

  std::shared_ptr<const Entries> GetEntries() {
    exc::ScopeLock scope(lock);
    return entries;
  }

  // One call of one listener, counted while it lives; not open when the listener has been removed.
  class Call {
   public:
    Call(State& state, Entry& entry) : state_(state), entry_(entry), frame_{&entry, innermost} {
      exc::ScopeLock scope(state_.lock);
      isOpen_ = !entry_.isRemoved;
      if (!isOpen_) return;
      ++entry_.calls;
      innermost = &frame_;
    }
    ~Call() {
      if (!isOpen_) return;
      innermost = frame_.outer;
      exc::ScopeLock scope(state_.lock);
      if (--entry_.calls == 0 && entry_.isRemoved) state_.callEnded.Broadcast(state_.lock);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    bool IsOpen() const { return isOpen_; }

   private:
    State& state_;
    Entry& entry_;
    Frame frame_;
    bool isOpen_ = false;
  };

  // What a listener throws must not end the render thread: it goes to the log, and the others are called.
  template <typename Function>
  void ForEach(Function function) {
    const std::shared_ptr<const Entries> table = GetEntries();
    for (const std::shared_ptr<Entry>& entry : *table) {
      const Call call(*this, *entry);
      if (!call.IsOpen()) continue;
      try {
        function(*entry->listener);
      } catch (const std::exception& error) {
        TeskLogException(error.what(), "reference_suite/core/gui_dispatcher.cpp", __LINE__);
      } catch (...) {
        TeskLogException("A listener threw.", "reference_suite/core/gui_dispatcher.cpp", __LINE__);
      }
    }
  }
};

GuiDispatcher guiDispatcher;

GuiDispatcher::GuiDispatcher() : state_(std::make_unique<State>()) {}

GuiDispatcher::~GuiDispatcher() = default;

void GuiDispatcher::AddListener(GuiListener* listener) {
  exc::ScopeLock scope(state_->lock);
  const State::Entries& entries = *state_->entries;
  const bool isKnown =
      std::any_of(entries.begin(), entries.end(), [=](const auto& entry) { return entry->IsOf(listener); });
  if (isKnown || listener == nullptr) return;
  State::Entries changed = entries;
  changed.push_back(std::make_shared<Entry>(Entry{listener, 0, false}));
  state_->entries = std::make_shared<const State::Entries>(std::move(changed));
}

void GuiDispatcher::RemoveListener(GuiListener* listener) {
  exc::ScopeLock scope(state_->lock);
  const State::Entries& entries = *state_->entries;
  const auto found =
      std::find_if(entries.begin(), entries.end(), [=](const auto& entry) { return entry->IsOf(listener); });
  if (found == entries.end()) return;
  const std::shared_ptr<Entry> entry = *found;
  entry->isRemoved = true;
  try {
    State::Entries changed = entries;
    std::erase_if(changed, [](const auto& each) { return each->isRemoved; });
    state_->entries = std::make_shared<const State::Entries>(std::move(changed));
  } catch (const std::bad_alloc&) {
    // It stays in the table until the next listener goes; nobody calls it.
  }
  if (IsCalledOnThisThread(*entry)) return;
  while (entry->calls > 0) state_->callEnded.WaitWhileLocked(scope);
}

void GuiDispatcher::SendPlaybackStarted() {
  state_->ForEach([](GuiListener& listener) { listener.OnPlaybackStarted(); });
}

void GuiDispatcher::SendPlaybackPaused() {
  state_->ForEach([](GuiListener& listener) { listener.OnPlaybackPaused(); });
}

void GuiDispatcher::SendPlaybackStopped() {
  state_->ForEach([](GuiListener& listener) { listener.OnPlaybackStopped(); });
}

void GuiDispatcher::SendPlayerExceptionNotification() {
  state_->ForEach([](GuiListener& listener) { listener.OnPlayerException(); });
}

void GuiDispatcher::SendSongLoaded(const std::string& songNumber) {
  state_->ForEach([&](GuiListener& listener) { listener.OnSongLoaded(songNumber); });
}

void GuiDispatcher::SendLoadingProgress(const std::string& songNumber, double fraction) {
  state_->ForEach([&](GuiListener& listener) { listener.OnLoadingProgress(songNumber, fraction); });
}

void GuiDispatcher::SendPosition(const PositionUpdate& update) {
  state_->ForEach([&](GuiListener& listener) { listener.OnPosition(update); });
}

void GuiDispatcher::SendCaesura(const std::string& songNumber, unsigned tickIndex) {
  state_->ForEach([&](GuiListener& listener) { listener.OnCaesura(songNumber, tickIndex); });
}

void GuiDispatcher::SendLoopPass(const LoopUpdate& update) {
  state_->ForEach([&](GuiListener& listener) { listener.OnLoopPass(update); });
}

}  // namespace notify
