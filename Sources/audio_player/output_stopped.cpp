#include "Sources/audio_player/audio_player.h"
#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"

void AudioPlayer::NotifyOutputHasStopped() {
  {
    // Not between the state and the start of whoever starts: the output would play for a player that stands.
    exc::ScopeLock starting(startLock_);
    exc::ScopeLock lock(*this);
    SetPlayerState(PlayerState::STOP);
    if (stopRequested_.exchange(false)) return;
  }
  // Nobody asked for it: the song has come to its end. Listeners run without the lock.
  notify::callbackDispatcher.Notify(notify::names::stopped_at_end_of_song, nullptr);
}
