#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/scope_lock.h"
#include "suite/midi/song_data.h"
#include "suite/player_core/gui_update.h"

void OBShowControl::LoadStartAndEndTickIndices() {
  const TL::Timeline& timeline = GetCurrentSongData().GetTimeline();
  midiEndTickIndex_ = timeline.GetMidiEndTicks();
  audioStartTickIndex_ = timeline.GetAudioStartTicks();
  const unsigned audioEnd = timeline.GetAudioEndTicks();
  // A song without an audio end runs to the end of its MIDI.
  audioEndTickIndex_ = audioEnd == 0 ? midiEndTickIndex_.load() : audioEnd;
}

unsigned OBShowControl::GetStartTickIndex() {
  return audioStartTickIndex_;
}

unsigned OBShowControl::GetEndTickIndex() {
  return audioEndTickIndex_;
}

void OBShowControl::FinishLoadingSongLog() {
  {
    exc::ScopeLock guiLock(GetGuiUpdate());
    exc::ScopeLock converterLock(samplesTicksConverter_);
    exc::ScopeLock lock(*this);
    samplesTicksConverter_.SetData(GetCurrentSongData(), GetStartTickIndex());
    sampleIndex_ = 0;
    nextJumpSampleAdjustment_ = 0;
    expectedNextAddToSampleIndex_ = 0;
  }
  ShowControl::FinishLoadingSongLog();
}
