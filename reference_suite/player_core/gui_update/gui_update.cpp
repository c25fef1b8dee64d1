#include "suite/player_core/gui_update.h"

#include <algorithm>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/gui_update/state.h"
#include "suite/player_core/player.h"
#include "suite/player_core/show_control.h"

namespace gui {

// One update on this thread.
class GuiUpdate::UpdateScope {
 public:
  explicit UpdateScope(State& state) : state_(state) {
    exc::ScopeLock scope(state_.lock);
    number_ = state_.BeginUpdate();
  }
  ~UpdateScope() { state_.EndUpdate(); }
  UpdateScope(const UpdateScope&) = delete;
  UpdateScope& operator=(const UpdateScope&) = delete;
  State::UpdateNumber Number() const { return number_; }

 private:
  State& state_;
  State::UpdateNumber number_ = 0;
};

GuiUpdate::GuiUpdate(Player& player, std::function<bool(unsigned*)> audibleTick)
    : RLockable("GuiUpdate"), state_(std::make_unique<State>(*this, player, std::move(audibleTick))) {}

void GuiUpdate::Pause() {
  State& state = *state_;
  exc::ScopeLock scope(state.lock);
  state.isPaused = true;
  if (state.IsUpdatingOnThisThread()) return;
  while (!state.updatingThreads.empty()) state.updateEnded.WaitWhileLocked(scope);
}

void GuiUpdate::Unpause() {
  exc::ScopeLock scope(state_->lock);
  state_->isPaused = false;
  state_->wake.Wake();
}

bool GuiUpdate::IsPaused() {
  exc::ScopeLock scope(state_->lock);
  return state_->isPaused;
}

void GuiUpdate::ResetAndSeekToTickIndex(unsigned tickIndex) {
  const UpdateScope update(*state_);
  if (state_->Show(update.Number(), tickIndex, true)) state_->SendShown();
}

void GuiUpdate::UpdateOnce() {
  const UpdateScope update(*state_);
  unsigned tick = 0;
  state_->audibleTick(&tick);
  if (state_->Show(update.Number(), tick, true)) state_->SendShown();
}

unsigned GuiUpdate::GetTickIndex() {
  exc::ScopeLock scope(state_->lock);
  return state_->shownTick;
}

void GuiUpdate::SetSong(const tesk_midi::SongData* song) {
  SongPositions positions(song);
  exc::ScopeLock scope(state_->lock);
  if (state_->song.HasSong()) state_->lastOfSongBefore = state_->shownTick;
  state_->song = std::move(positions);
}

GuiUpdate::State::UpdateNumber GuiUpdate::State::BeginUpdate() {
  updatingThreads.push_back(pthread_self());
  return ++lastBegun;
}

void GuiUpdate::State::EndUpdate() {
  exc::ScopeLock scope(lock);
  const auto self = std::find_if(updatingThreads.begin(), updatingThreads.end(),
                                 [](pthread_t other) { return pthread_equal(other, pthread_self()) != 0; });
  updatingThreads.erase(self);
  updateEnded.Broadcast(lock);
}

bool GuiUpdate::State::IsUpdatingOnThisThread() {
  return std::any_of(updatingThreads.begin(), updatingThreads.end(),
                     [](pthread_t other) { return pthread_equal(other, pthread_self()) != 0; });
}

bool GuiUpdate::State::Show(UpdateNumber number, unsigned tick, bool alsoWhenUnchanged) {
  exc::ScopeLock scope(lock);
  if (number < lastShown || (tick == shownTick && !alsoWhenUnchanged)) return false;
  lastShown = number;
  shownTick = tick;
  shownPosition = song.HasSong() ? song.GetPosition(tick, player.GetShowControl().GetHowToPlay())
                                 : song.GetPosition(tick);
  return true;
}

bool GuiUpdate::State::IsOfSongBefore(unsigned tick) {
  exc::ScopeLock scope(lock);
  if (lastOfSongBefore != tick) lastOfSongBefore.reset();
  return lastOfSongBefore.has_value();
}

void GuiUpdate::State::SendShown() {
  UpdateNumber sent = 0;
  bool isLatest = false;
  while (!isLatest) {
    notify::PositionUpdate position;
    {
      exc::ScopeLock scope(lock);
      sent = lastShown;
      position = shownPosition;
    }
    notify::guiDispatcher.SendPosition(position);
    exc::ScopeLock scope(lock);
    isLatest = lastShown == sent;
  }
}

}  // namespace gui
