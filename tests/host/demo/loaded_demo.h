#pragma once

#include <string>
#include <utility>
#include <vector>

#include "suite/midi/load_show.h"

// The demo's cues and MIDI files as the show library reads them, without the audio that takes seconds to
// make.
class LoadedDemo {
 public:
  LoadedDemo();

  const tesk_midi::LoadedShow& Show() const { return show_; }
  const tesk_midi::SongData& Song(const std::string& number) const { return show_.showData->GetSong(number); }
  const CL::SongLog& Log(const std::string& number) const { return show_.changeLog->GetSongLog(number); }

  // Ticks between which the song's audio lies.
  unsigned AudioStart(const std::string& number) const;
  unsigned AudioEnd(const std::string& number) const;

  // Frames from the start of the song's audio to `tick`, as the engine counts them at 48,000 a second.
  long long FrameAt(const std::string& number, unsigned tick) const;

  // Every jump that loops and cuts can take: from which tick to which.
  std::vector<std::pair<unsigned, unsigned>> Jumps(const std::string& number) const;

 private:
  tesk_midi::LoadedShow show_;
};
