#include "tests/soak/soak_run.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/soak/memory.h"
#include "tests/soak/soak_show.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/wait_until.h"

namespace soak {

namespace {

// The host, the update generator and the deleter.
constexpr int kThreadsAtRest = 3;

}  // namespace

std::size_t SoakRun::CurrentSong_() {
  return static_cast<std::size_t>(std::stoul(player_->GetCurrentSongNumber())) - 1;
}

void SoakRun::Load_(std::size_t song) {
  ++loads_;
  player_->LoadSong(std::to_string(song + 1));
  player_->Play();  // waits until it is decoded
  test_support::deleter_clock::PassOneSecond();
}

void SoakRun::Settle(std::size_t song) {
  Load_(song);
  player_->StopAndReset();
  ASSERT_TRUE(test_support::WaitUntil([] { return CountThreads() == kThreadsAtRest; }));
  test_support::deleter_clock::PassOneSecond();
}

void SoakRun::PlayFrames(long long frames) {
  const long long end = framesHeard_ + frames;
  long long untilCommand = 0;
  while (framesHeard_ < end && !testing::Test::HasFailure()) {
    const long long before = framesHeard_;
    Step_();
    untilCommand -= framesHeard_ - before;
    if (untilCommand > 0) continue;
    Act_();
    untilCommand = dice_.Between(1, 20 * kRate);
  }
}

void SoakRun::StayInVamp(long long frames) {
  Settle(songs_.size() - 1);
  player_->Play();
  const long long end = framesHeard_ + frames;
  while (framesHeard_ < end && !testing::Test::HasFailure()) Step_();
  ASSERT_TRUE(player_->IsPlaying());
  EXPECT_EQ(player_->GetElapsedSampleCount(), frames + (framesHeard_ - end));
  // Heard so far: up to the end of the vamp, then round it. Where the listener is follows from that alone.
  const long long from = FirstSample(8 * kPpq);
  const long long pass = FirstSample(16 * kPpq) - from;
  // At the end of a pass the jump back is still to come.
  const long long index = from + 1 + (player_->GetElapsedSampleCount() - from - 1) % pass;
  EXPECT_EQ(player_->GetSampleIndex(), index);
  unsigned tick = 0;
  EXPECT_TRUE(player_->GetAudibleTickIndex(&tick));
  EXPECT_LE(std::llabs(FirstSample(tick) - index), 13) << "more than half a tick";
}

void SoakRun::CheckPositionExactly(int reads) {
  Settle(0);
  player_->Play();
  const long long before = framesHeard_;
  for (int read = 0; read < reads && !testing::Test::HasFailure(); ++read) {
    Step_();
    const long long index = framesHeard_ - before;
    ASSERT_EQ(player_->GetSampleIndex(), index);
    ASSERT_EQ(player_->GetElapsedSampleCount(), index);
    const long long tick = player_->GetTickIndex();
    ASSERT_LE(FirstSample(tick), index);
    ASSERT_GT(FirstSample(tick + 1), index);
    unsigned audible = 0;
    ASSERT_TRUE(player_->GetAudibleTickIndex(&audible));
    ASSERT_LE(std::llabs(FirstSample(audible) - index), 13) << "more than half a tick";
  }
}

void SoakRun::Step_() {
  heard_.clear();
  tesk_audio::StepReport report;
  const std::size_t song = CurrentSong_();
  const bool ran = tesk_audio::StepOfflineOutput(
      &report, [this](const float* frames, std::size_t count) { Hear_(frames, count); });
  if (!ran) {
    GoOn_();
    return;
  }
  const long long value = songs_[song].firstValue + report.sampleIndex;
  for (std::size_t i = 0; i < heard_.size(); ++i) {
    ASSERT_EQ(std::llround(static_cast<double>(heard_[i]) * 8388608.0), value + static_cast<long long>(i))
        << "song " << song + 1 << ", frame " << report.sampleIndex + static_cast<long long>(i);
  }
  if (!heard_.empty()) {
    ASSERT_EQ(player_->GetSampleIndex(), report.sampleIndex + static_cast<long long>(heard_.size()));
  }
  framesHeard_ += static_cast<long long>(heard_.size());
}

void SoakRun::Hear_(const float* frames, std::size_t count) {
  heard_.insert(heard_.end(), frames, frames + count);
}

void SoakRun::GoOn_() {
  ASSERT_FALSE(player_->IsPlaying()) << "plays and gives no frames";
  if (player_->GetPlayerState() == PlayerState::STOP) {
    Load_((CurrentSong_() + 1) % songs_.size());
  } else if (!player_->Continue()) {
    player_->Play();
  }
}

void SoakRun::Act_() {
  ++commands_;
  const scenarios::SongPlan& song = songs_[CurrentSong_()];
  switch (dice_.Between(0, 11)) {
    case 0:
      player_->Pause();
      break;
    case 1:
      player_->Stop();
      player_->Play();
      break;
    case 2:
      player_->StopAndReset();
      player_->Play();
      break;
    case 3:
    case 4:
      player_->Seek(dice_.Between(0, song.PlaybackEnd()));
      break;
    case 5:
      player_->Pause();
      player_->Seek(dice_.Between(0, song.PlaybackEnd()));
      break;
    case 6:
      Load_(dice_.Between(0, static_cast<unsigned>(songs_.size()) - 1));
      break;
    case 7:
      ++loads_;
      player_->NextSong();
      player_->Play();
      break;
    case 8:
      ++loads_;
      player_->PreviousSong();
      player_->Play();
      break;
    case 9:
      player_->SetAttaccaState(player_->GetCurrentSongNumber(),
                               static_cast<unsigned char>(dice_.Between(0, 1)));
      break;
    default:
      player_->FlowControlExit();
      player_->Continue();
  }
  test_support::deleter_clock::PassOneSecond();
}

}  // namespace soak
