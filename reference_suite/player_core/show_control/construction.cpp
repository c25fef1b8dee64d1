#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/midi/how_to_play.h"

ShowControl::ShowControl(ActiveSongNumber& activeSongNumber, tesk_midi::ShowData& showData,
                         CL::ChangeLog* changeLog)
    : Lockable("ShowControl"), state_(std::make_unique<State>(activeSongNumber, showData, changeLog)) {}

ShowControl::~ShowControl() = default;

exc::ExLock& ShowControl::GetReadSamplesLock() {
  return state_->readSamples;
}

// Re-entrant: planning calls itself again after a jump, and a jump's override calls back into the base.
exc::ExLock* ShowControl::GetLock() {
  return &state_->lock;
}

bool ShowControl::FollowsClock() {
  return false;
}

void ShowControl::FollowClock(bool /*follow*/) {}

void ShowControl::HowToPlayAdvanceToTickIndex(unsigned tickIndex) {
  GetHowToPlay().AdvanceToTickIndex(tickIndex);
}
