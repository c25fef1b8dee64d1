#include "tests/scenarios/duet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace scenarios {
namespace {

bool Contains(const std::vector<unsigned>& ticks, unsigned tick) {
  return std::find(ticks.begin(), ticks.end(), tick) != ticks.end();
}

}  // namespace

std::size_t Duet::Run(std::size_t first) {
  player_->LoadSong(std::to_string(first + 1));
  Begin_(first);
  player_->Play();
  while (!testing::Test::HasFailure() && Step_()) {
  }
  if (testing::Test::HasFailure()) {
    ADD_FAILURE() << "song " << index_ + 1 << " after " << framesOfSong_ << " frames\n"
                  << Describe(songs_[index_]) << actions_.str();
  }
  player_->Stop();
  return std::max(first, index_) + 1;
}

void Duet::Begin_(std::size_t song) {
  index_ = song;
  model_.emplace(songs_[song], rate_);
  framesOfSong_ = 0;
  readsOfSong_ = 0;
  cameByAttacca_ = false;
  actions_.str("");
  untilAction_ = dice_->Between(1, 20000);
}

bool Duet::Step_() {
  std::vector<float> heard;
  tesk_audio::StepReport report;
  const bool ran = tesk_audio::StepOfflineOutput(&report, [&heard](const float* frames, std::size_t count) {
    heard.insert(heard.end(), frames, frames + count);
  });
  if (!ran && WaitsAtTheStartAfterAttacca_()) {
    player_->Play();
    return true;
  }
  if (!ran) {
    ADD_FAILURE() << "the output does not run, and said neither caesura nor end";
    return false;
  }
  if (report.event == tesk_audio::StepEvent::Attacca) {
    if (!OnEnd_(true)) return false;
    Compare_(heard);
    return true;
  }
  Compare_(heard);
  if (report.event == tesk_audio::StepEvent::Caesura) return OnCaesura_();
  if (report.event == tesk_audio::StepEvent::End) return OnEnd_(false);
  // Of very short ticks a passage may be a frame or two.
  constexpr long long kFewFramesARead = 50;
  if (std::max(framesOfSong_, kFewFramesARead * ++readsOfSong_) > mostFrames_) return false;
  untilAction_ -= static_cast<long long>(heard.size());
  if (untilAction_ <= 0 && !model_->OnCue()) Act_();
  return true;
}

// Landing on a caesura by a seek, as an attacca does, stops a running output; playing on meets it then.
bool Duet::WaitsAtTheStartAfterAttacca_() {
  if (!cameByAttacca_ || framesOfSong_ != 0 || !player_->HasPendingCaesura()) return false;
  cameByAttacca_ = false;
  return model_->Settle() == FlowModel::State::Caesura;
}

void Duet::Compare_(const std::vector<float>& heard) {
  std::vector<long long> expected;
  model_->Play(static_cast<long long>(heard.size()), &expected);
  ASSERT_EQ(heard.size(), expected.size()) << "more frames than the song has up to its next stop";
  for (std::size_t i = 0; i < heard.size(); ++i) {
    const auto value = std::llround(static_cast<double>(heard[i]) * 8388608.0);
    const long long song = songs_[index_].firstValue;
    ASSERT_EQ(value - song, expected[i] - song) << "frame " << framesOfSong_ + static_cast<long long>(i);
  }
  framesOfSong_ += static_cast<long long>(heard.size());
  framesCompared_ += static_cast<long long>(heard.size());
}

bool Duet::OnCaesura_() {
  EXPECT_EQ(model_->Settle(), FlowModel::State::Caesura) << "stopped where no caesura is";
  EXPECT_EQ(player_->GetPlayerState(), PlayerState::PAUSE);
  if (testing::Test::HasFailure()) return false;
  EXPECT_EQ(player_->GetTickIndex(), *model_->NextCaesura());
  if (dice_->OneIn(5) && Seek_(AnyTick_())) {
    player_->Play();
  } else {
    Note_("continue");
    model_->Continue();
    EXPECT_TRUE(player_->Continue());
  }
  EXPECT_EQ(player_->GetPlayerState(), PlayerState::PLAY);
  return true;
}

bool Duet::OnEnd_(bool attacca) {
  EXPECT_EQ(model_->Settle(), FlowModel::State::Ended) << "ended before the song does";
  const auto set = attaccas_.find(index_);
  EXPECT_EQ(attacca, set != attaccas_.end() ? set->second : songs_[index_].attacca);
  if (testing::Test::HasFailure() || !attacca) return false;
  Begin_(index_ + 1);
  cameByAttacca_ = true;
  return true;
}

void Duet::Act_() {
  untilAction_ = dice_->Between(1, 20000);
  const unsigned what = dice_->Between(0, 12);
  if (what < 8) {
    ActOnThisSong_(what);
  } else {
    ActOnSongs_(what);
  }
}

void Duet::ActOnThisSong_(unsigned what) {
  switch (what) {
    case 0:
      if (!model_->CanAsk()) break;
      Note_("again");
      model_->Again();
      player_->RepeatSafety();
      break;
    case 1:
      SkipTheNextCaesura_();
      break;
    case 2:
      Seek_(AnyTick_());
      break;
    case 5:
      GoOnABarLineOfAVamp_();
      break;
    case 3:
      Note_("pause and play");
      player_->Pause();
      player_->Play();
      break;
    case 4:
      Note_("stop and play");
      player_->Stop();
      player_->Play();
      break;
    default:
      Go_();
  }
}

void Duet::SkipTheNextCaesura_() {
  const unsigned bar = songs_[index_].BarTicks();
  // Which of two neighbouring ticks is "a bar ahead" is nobody's concern.
  const auto caesura = model_->NextCaesura();
  if (caesura && *caesura - model_->Tick() + 2 > bar && *caesura - model_->Tick() < bar + 2) return;
  Note_("skip the next caesura");
  model_->SkipCaesura(bar);
  player_->Continue();
}

// Before anything that follows the line is played.
void Duet::GoOnABarLineOfAVamp_() {
  const SongPlan& song = songs_[index_];
  for (const LoopPlan& loop : song.loops) {
    const unsigned line = (loop.from + song.BarTicks() - 1) / song.BarTicks() * song.BarTicks();
    if (loop.kind != LoopKind::Vamp || line >= loop.to || dice_->OneIn(2)) continue;
    if (Seek_(line) && !model_->OnCue()) Go_();
    return;
  }
}

void Duet::Go_() {
  Note_("go");
  model_->Go();
  player_->FlowControlExit();
}

void Duet::Note_(const std::string& action) {
  actions_ << "  after " << framesOfSong_ << " frames, tick " << model_->Tick() << ": " << action << "\n";
}

unsigned Duet::AnyTick_() {
  const SongPlan& song = songs_[index_];
  if (song.caesuras.empty() || !dice_->OneIn(3)) return dice_->Between(0, song.PlaybackEnd() + 5);
  return song.caesuras[dice_->Between(0, static_cast<unsigned>(song.caesuras.size()) - 1)];
}

bool Duet::Seek_(unsigned tick) {
  const SongPlan& song = songs_[index_];
  if (model_->HasPerformersJump()) return false;
  if (tick > song.PlaybackEnd()) {
    player_->Seek(tick);  // nowhere: nothing changes
    return false;
  }
  Note_("seek " + std::to_string(tick));
  model_->Seek(tick);
  const bool wasPlaying = player_->GetPlayerState() == PlayerState::PLAY;
  player_->Seek(tick);
  if (!Contains(song.caesuras, std::max(tick, song.audioStart))) return true;
  // A running output stops, and playing on meets the caesura; otherwise the stop is made at once.
  if (wasPlaying) {
    EXPECT_EQ(player_->GetPlayerState(), PlayerState::STOP);
    player_->Play();
  } else {
    EXPECT_EQ(player_->GetPlayerState(), PlayerState::PAUSE);
    model_->Continue();
  }
  return true;
}

}  // namespace scenarios
