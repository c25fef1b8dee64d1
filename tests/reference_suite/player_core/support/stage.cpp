#include "tests/reference_suite/player_core/support/stage.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "suite/midi/song_data.h"

namespace test_support {

void TestShowControl::LoadStartAndEndTickIndices() {
  Tell_("LoadStartAndEndTickIndices");
  ShowControl::LoadStartAndEndTickIndices();
  const TL::Timeline& timeline = GetCurrentSongData().GetTimeline();
  start_ = timeline.GetAudioStartTicks();
  end_ = timeline.GetAudioEndTicks() != 0 ? timeline.GetAudioEndTicks() : timeline.GetMidiEndTicks();
}

void TestShowControl::ResetControlVariables() {
  Tell_("ResetControlVariables");
  ShowControl::ResetControlVariables();
}

void TestShowControl::ResetGuiUpdate() {
  Tell_("ResetGuiUpdate");
  ShowControl::ResetGuiUpdate();
}

void TestShowControl::SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead) {
  // Not always: what it costs is watched.
  if (onCall) Tell_("SetJump " + std::to_string(tickIndex) + (skipAhead ? " skipping" : ""));
  ShowControl::SetJump(tickIndex, lock, skipAhead);
}

void TestShowControl::SetDataOnGuiAndHowToPlay() {
  Tell_("SetDataOnGuiAndHowToPlay");
  ShowControl::SetDataOnGuiAndHowToPlay();
}

void TestShowControl::FinishLoadingSongLog() {
  Tell_("FinishLoadingSongLog");
  ShowControl::FinishLoadingSongLog();
}

bool TestShowControl::IsCaesuraStop() {
  exc::ScopeLock lock(*this);
  return caesuraStop_;
}
bool TestShowControl::IsJumpPending() {
  exc::ScopeLock lock(*this);
  return jumpPending_;
}
bool TestShowControl::IsReplan() {
  exc::ScopeLock lock(*this);
  return replan_;
}
unsigned TestShowControl::GetReached() {
  exc::ScopeLock lock(*this);
  return reachedTickIndex_;
}

std::vector<LoopEvent> TestShowControl::GetLoopsAhead() {
  exc::ScopeLock lock(*this);
  return {loopEvents_.GetEvents().begin(), loopEvents_.GetEvents().end()};
}

std::vector<unsigned> TestShowControl::GetCaesurasAhead() {
  exc::ScopeLock lock(*this);
  std::vector<unsigned> ticks;
  for (const CountdownCaesura& caesura : pendingCaesuras_) ticks.push_back(caesura.GetTickIndex());
  return ticks;
}

LoopEvent& TestShowControl::GetLoop(unsigned to) {
  exc::ScopeLock lock(*this);
  for (LoopEvent& loop : loopEvents_.GetEvents()) {
    if (loop.tick == to) return loop;
  }
  throw std::logic_error("no loop ahead ends at " + std::to_string(to));
}

std::string TestShowControl::DescribeLoop(unsigned to) {
  const LoopEvent loop = GetLoop(to);
  return std::to_string(loop.limit) + "/" + std::to_string(loop.done) + "/" +
         std::to_string(loop.GetCanceled() ? 1 : 0);
}

std::string TestShowControl::Advance(unsigned from, unsigned to) {
  FindNextControlEventOnAdvance(from, to);
  const std::string tick = std::to_string(GetReached());
  if (IsCaesuraStop()) return "caesura " + tick;
  if (IsJumpPending()) return "jump " + tick;
  if (IsReplan()) return "replan " + tick;
  return tick;
}

std::string TestShowControl::Play(unsigned to) {
  ProcessLoopEventsAtCurrentTickIndex();
  const std::string outcome = Advance(GetTickIndex(), to);
  if (IsJumpPending()) {
    exc::ScopeLock lock(*this);
    const unsigned target = reachedTickIndex_;
    FindNextControlEventOnSeek(target, false);
    SetJump(target, lock, true);
  } else if (!IsCaesuraStop() && !IsReplan()) {
    MoveTo(GetReached());
  }
  return outcome;
}

std::string TestShowControl::Perform(unsigned quantum, int reads) {
  std::string heard;
  unsigned passage = GetTickIndex();
  const auto endPassage = [&] {
    if (GetTickIndex() == passage) return;
    heard += std::to_string(passage) + ".." + std::to_string(GetTickIndex()) + " ";
  };
  for (int i = 0; i < reads; ++i) {
    unsigned to = std::min(GetTickIndex() + quantum, GetEndTickIndex());
    if (to <= GetTickIndex()) {
      endPassage();
      return heard + (HasPendingCaesura() ? "caesura" : "end");
    }
    ProcessLoopEventsAtCurrentTickIndex();
    {
      exc::ScopeLock lock(*this);
      if (loopEvents_.GetSize() != 0) to = std::min(to, loopEvents_.GetFirstLoopEvent().tick);
    }
    if (to <= GetTickIndex()) throw std::logic_error("the first loop event does not lie ahead");
    const std::string outcome = Advance(GetTickIndex(), to);
    if (IsCaesuraStop()) {
      endPassage();
      return heard + "caesura";
    }
    if (!IsJumpPending()) {
      MoveTo(GetReached());
      continue;
    }
    endPassage();
    exc::ScopeLock lock(*this);
    const unsigned target = reachedTickIndex_;
    FindNextControlEventOnSeek(target, false);
    SetJump(target, lock, true);
    passage = target;
    if (HasPendingCaesura()) return heard + "caesura";
    if (target >= midiEndTickIndex_) return heard + "end";
  }
  endPassage();
  return heard + "...";
}

void TestShowControl::PlayTo(unsigned tick) {
  while (GetTickIndex() < tick) {
    Play(std::min(GetTickIndex() + 100, tick + 1));
    if (IsCaesuraStop() || IsJumpPending())
      throw std::logic_error("a cue lies before " + std::to_string(tick));
    if (GetTickIndex() > tick) MoveTo(tick);
  }
}

void TestShowControl::MoveTo(unsigned tick) {
  SetTickIndex(tick);
  HowToPlayAdvanceToTickIndex(tick);
}

void TestShowControl::SetDspFactors(double scale, int transposition) {
  exc::ScopeLock lock(*this);
  dspTempoScale_ = scale;
  dspTransposition_ = transposition;
}

std::pair<double, int> TestShowControl::GetDspFactors() {
  exc::ScopeLock lock(*this);
  return {dspTempoScale_, dspTransposition_};
}

TestPlayer::TestPlayer(TestShow& show, const std::string& showPath)
    : Player(showPath),
      guiUpdate_(*this, [this](unsigned* tick) { return audible ? audible(tick) : false; }),
      showControl_(GetActiveSongNumberRef(), show, guiUpdate_, GetTransients()) {
  ConnectPlay([this] { ++plays; });
}

void TestPlayer::LoadSong(const std::string& songNumber) {
  SetActiveSongNumber(songNumber);
  showControl_.LoadSong();
}

bool TestPlayer::IsContinuePending() {
  exc::ScopeLock lock(*this);
  return continueIsPending_;
}

void TestPlayer::SetContinuePending(bool isPending) {
  exc::ScopeLock lock(*this);
  continueIsPending_ = isPending;
}

Stage::Stage(const std::vector<TestSong>& songs)
    : show(songs), player(show), control(player.GetShowControl()) {
  player.LoadSong(songs.front().GetNumber());
}

bool IsFree(exc::ExLock& lock) {
  bool isFree = false;
  std::thread([&] {
    if (lock.TryLock()) {
      isFree = true;
      lock.Unlock();
    }
  }).join();
  return isFree;
}

}  // namespace test_support
