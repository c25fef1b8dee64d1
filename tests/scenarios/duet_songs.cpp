// What a performer does with whole songs, each of which begins anew then.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/scenarios/duet.h"

namespace scenarios {
namespace {

// Further into a song than this "previous" begins it anew.
constexpr unsigned kRestartAfterTicks = 1920;

}  // namespace

void Duet::ActOnSongs_(unsigned what) {
  switch (what) {
    case 8:
      LoadAnySong_();
      break;
    case 9:
      NextSong_();
      break;
    case 10:
      PreviousSong_();
      break;
    case 11:
      StopAndReset_();
      break;
    default:
      SetAnyAttacca_();
  }
}

bool Duet::MayChangeSong_() {
  if (changesLeft_ == 0) return false;
  --changesLeft_;
  return true;
}

// The player is there already.
void Duet::PlayFromStart_(std::size_t song) {
  const std::string before = actions_.str();
  Begin_(song);
  actions_ << before << "  song " << song + 1 << " from its start\n";
  EXPECT_EQ(player_->GetCurrentSongNumber(), std::to_string(song + 1));
  player_->Play();
  EXPECT_EQ(player_->GetPlayerState(), PlayerState::PLAY);
}

void Duet::LoadAnySong_() {
  if (!MayChangeSong_()) return;
  const std::size_t song = dice_->Between(0, static_cast<unsigned>(songs_.size()) - 1);
  Note_("load song " + std::to_string(song + 1));
  player_->LoadSong(std::to_string(song + 1));
  PlayFromStart_(song);
}

void Duet::NextSong_() {
  if (!MayChangeSong_()) return;
  Note_("next song");
  const bool isLast = index_ + 1 == songs_.size();
  EXPECT_EQ(player_->NextSong(), isLast);
  PlayFromStart_(isLast ? index_ : index_ + 1);
}

void Duet::PreviousSong_() {
  const unsigned ticks = model_->Tick() - songs_[index_].audioStart;
  // Which of two neighbouring ticks is too far is nobody's concern.
  if (ticks + 2 > kRestartAfterTicks && ticks < kRestartAfterTicks + 2) return;
  if (!MayChangeSong_()) return;
  Note_("previous song");
  player_->PreviousSong();
  const bool isSought = ticks > kRestartAfterTicks || index_ == 0;
  PlayFromStart_(isSought ? index_ : index_ - 1);
  // The seek to the start was made while nothing played: playing on leaves a caesura there behind.
  const std::vector<unsigned>& caesuras = songs_[index_].caesuras;
  const bool isOnCaesura =
      std::find(caesuras.begin(), caesuras.end(), songs_[index_].audioStart) != caesuras.end();
  if (isSought && isOnCaesura) model_->Continue();
}

void Duet::StopAndReset_() {
  if (!MayChangeSong_()) return;
  Note_("stop and reset");
  player_->StopAndReset();
  PlayFromStart_(index_);
}

// Behind the last song nothing could be run into.
void Duet::SetAnyAttacca_() {
  if (songs_.size() == 1) return;
  const std::size_t song = dice_->Between(0, static_cast<unsigned>(songs_.size()) - 2);
  const bool attacca = dice_->OneIn(2);
  Note_("song " + std::to_string(song + 1) + (attacca ? " attacca" : " not attacca"));
  attaccas_[song] = attacca;
  player_->SetAttaccaState(std::to_string(song + 1), attacca ? 1 : 0);
}

}  // namespace scenarios
