#pragma once

#include <string>

// The base of every player, reduced to its state; what it is told goes to the journal as "player.OPERATION".
// It differs from a real one in what it leaves out: no caesura, jump or position is looked after.
namespace fakes::player {

void Reset();
// What Player::CurrentSongIsAttacca and Player::GetTickIndex answer.
void SetSongIsAttacca(bool isAttacca);
void SetTickIndex(unsigned tickIndex);

}  // namespace fakes::player
