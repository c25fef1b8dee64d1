#include <algorithm>
#include <stdexcept>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/core/event_codes.h"
#include "suite/midi/change_log.h"
#include "suite/midi/how_to_play.h"
#include "suite/midi/show_data.h"
#include "suite/player_core/active_song_number.h"
#include "suite/player_core/gui_update.h"

namespace {

const CL::SongLog kNoCues;

// How often the jump back is taken: 0 for ever, less than 0 never.
int GetLimit(const CL::Loop& loop) {
  switch (loop.GetEventCode()) {
    case codes::kVamp:
      return 0;
    case codes::kRepeat:
      return loop.GetPasses() > 1 ? loop.GetPasses() - 1 : -1;
    default:
      return -1;  // a safety, until somebody asks
  }
}

}  // namespace

void ShowControl::LoadSong() {
  exc::ScopeLock samples(state_->readSamples);
  const std::string number = state_->activeSongNumber.Get();
  const tesk_midi::SongData& song = state_->showData.GetSong(number);
  {
    exc::ScopeLock lock(*this);
    state_->song = &song;
    ClearJumps_();
    TakeCuesOf_(state_->changeLog == nullptr ? kNoCues : state_->changeLog->GetSongLog(number));
  }
  LoadStartAndEndTickIndices();
  SetDataOnGuiAndHowToPlay();
  FinishLoadingSongLog();
}

// The cues lie behind until they are armed.
void ShowControl::TakeCuesOf_(const CL::SongLog& log) {
  State& state = *state_;
  state.log = &log;
  loopEvents_.GetEvents().clear();
  state.loopsBehind.clear();
  for (const CL::Loop& loop : log.loops) {
    LoopEvent event;
    event.targetTick = loop.abs_time();
    event.tick = loop.GetEndTime();
    event.limit = GetLimit(loop);
    event.kind = static_cast<unsigned char>(loop.GetEventCode());
    state.loopsBehind.push_back(event);
  }
  state.cuts.clear();
  for (const CL::Cut& cut : log.cuts) state.cuts.push_back({cut.abs_time(), cut.GetEndTime()});
  std::stable_sort(state.cuts.begin(), state.cuts.end(),
                   [](const auto& a, const auto& b) { return a.fromTick < b.fromTick; });
  state.nextCut = state.cuts.size();
  state.caesuras.clear();
  for (const CL::Caesura& caesura : log.caesuras) state.caesuras.push_back(caesura.abs_time());
  std::sort(state.caesuras.begin(), state.caesuras.end());
  state.caesuras.erase(std::unique(state.caesuras.begin(), state.caesuras.end()), state.caesuras.end());
  pendingCaesuras_.clear();
}

void ShowControl::LoadStartAndEndTickIndices() {
  midiEndTickIndex_ = GetCurrentSongData().GetTimeline().GetMidiEndTicks();
}

void ShowControl::SetDataOnGuiAndHowToPlay() {
  const tesk_midi::SongData& song = GetCurrentSongData();
  GetGuiUpdate().SetSong(&song);
  GetHowToPlay().SetData(GetCurrentSongLog(), song.GetTimeline(), GetStartTickIndex());
}

void ShowControl::FinishLoadingSongLog() {
  exc::ScopeLock lock(*this);
  const unsigned start = GetStartTickIndex();
  ArmFrom_(start, Landing::Seek);
  SettleAt_(start);
  tickIndex_ = start;
  // The control stream stands at the position at all times.
  if (GetHowToPlay().GetTickIndex() != start) GetHowToPlay().Seek(start);
}

// Our update generator has no baseline of its own: it shows what the audible-tick query answers.
void ShowControl::ResetGuiUpdate() {}

const tesk_midi::SongData& ShowControl::GetCurrentSongData() {
  exc::ScopeLock lock(*this);
  if (state_->song == nullptr) throw std::logic_error("No song is loaded.");
  return *state_->song;
}

const CL::SongLog& ShowControl::GetCurrentSongLog() {
  exc::ScopeLock lock(*this);
  if (state_->song == nullptr) throw std::logic_error("No song is loaded.");
  return *state_->log;
}
