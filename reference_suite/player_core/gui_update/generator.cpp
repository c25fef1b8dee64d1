#include <algorithm>
#include <exception>
#include <new>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/gui_update/state.h"
#include "suite/core/tesk_log_exception.h"
#include "suite/utility/thread_names.h"

namespace gui {

namespace {

constexpr long long kNanosecondsPerUpdate = 1'000'000'000 / 60;
constexpr const char* kSourceFile = "reference_suite/player_core/gui_update/generator.cpp";

}  // namespace

void GuiUpdate::StartUpdateGenerator() {
  exc::ScopeLock scope(state_->lock);
  if (state_->thread.joinable()) return;
  state_->thread = std::thread([state = state_.get()] { state->Run(); });
}

GuiUpdate::~GuiUpdate() {
  {
    exc::ScopeLock scope(state_->lock);
    state_->isEnding = true;
    state_->wake.Wake();
  }
  if (state_->thread.joinable()) state_->thread.join();
}

void GuiUpdate::State::Run() noexcept {
  exc::thread_names.SetNameOfCurrentThread("GuiUpdate");
  long long nextTurn = GetMonotonicNanoseconds();
  UpdateNumber number = 0;
  while (WaitForTurn(&nextTurn, &number)) {
    TakeTurn(number);
    EndUpdate();
  }
}

// The update begins before the lock is given up: whoever pauses from then on waits for its end.
bool GuiUpdate::State::WaitForTurn(long long* nextTurn, UpdateNumber* number) {
  exc::ScopeLock scope(lock);
  while (!isEnding && (isPaused || GetMonotonicNanoseconds() < *nextTurn)) {
    if (isPaused) {
      wake.Wait(scope);
      *nextTurn = GetMonotonicNanoseconds();
    } else {
      wake.WaitUntil(scope, *nextTurn);
    }
  }
  if (isEnding) return false;
  // Turns that were missed are left out.
  *nextTurn = std::max(*nextTurn + kNanosecondsPerUpdate, GetMonotonicNanoseconds());
  *number = BeginUpdate();
  return true;
}

// Nothing leaves the thread. What goes wrong at every turn is reported once.
void GuiUpdate::State::TakeTurn(UpdateNumber number) noexcept {
  try {
    unsigned tick = 0;
    if (audibleTick(&tick) && !IsOfSongBefore(tick) && Show(number, tick, false)) SendShown();
    lastError.clear();
  } catch (const std::exception& exception) {
    ReportOnce(exception.what());
  } catch (...) {
    ReportOnce("The audible tick cannot be told.");
  }
}

void GuiUpdate::State::ReportOnce(const char* error) noexcept {
  if (lastError == error) return;
  TeskLogException(error, kSourceFile, __LINE__);
  try {
    lastError = error;
  } catch (const std::bad_alloc&) {
    // It is reported again at the next turn.
  }
}

}  // namespace gui
