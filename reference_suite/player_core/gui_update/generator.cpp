#include <algorithm>
#include <exception>

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
  std::string error;
  try {
    unsigned tick = 0;
    if (audibleTick(&tick) && Show(number, tick, false)) SendShown();
  } catch (const std::exception& exception) {
    error = exception.what();
  } catch (...) {
    error = "The audible tick cannot be told.";
  }
  if (!error.empty() && error != lastError) TeskLogException(error, kSourceFile, __LINE__);
  lastError = error;
}

}  // namespace gui
