#pragma once

#include <functional>
#include <vector>

#include "suite/player_core/player_state.h"

// The base of every player, reduced to its state; what it is told goes to the journal as "player.OPERATION".
// It differs from a real one in what it leaves out: no caesura, jump or position is looked after.
namespace fakes::player {

void Reset();
// What Player::CurrentSongIsAttacca and Player::GetTickIndex answer.
void SetSongIsAttacca(bool isAttacca);
void SetTickIndex(unsigned tickIndex);

// What was set through Player::SetPlayerState since the last time: not what was stored past it.
std::vector<PlayerState> TakeStatesSet();
// Called at the beginning of Player::SetPlayerState.
void OnSetState(std::function<void(PlayerState)> hook);

}  // namespace fakes::player
