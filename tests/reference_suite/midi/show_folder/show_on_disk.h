#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "suite/midi/load_show.h"

namespace made_show {

// A show folder in the system's folder for temporary files; gone with this object. Starts with an empty
// songs/.
class ShowOnDisk {
 public:
  ShowOnDisk();
  ~ShowOnDisk();
  ShowOnDisk(const ShowOnDisk&) = delete;
  ShowOnDisk& operator=(const ShowOnDisk&) = delete;

  std::filesystem::path Path() const { return path_; }
  std::string Name() const { return path_.string(); }

  // `file` is relative to the show: "songs/3 Waltz.toml".
  void Write(const std::string& file, const std::string& bytes) const;
  // A MIDI file of so many bars of 4/4 at 120 quarter notes a minute, division 480.
  void WriteMidi(const std::string& file, unsigned bars = 48) const;

  tesk_midi::LoadedShow Load() const { return tesk_midi::LoadShow(Name()); }

  // Every problem as text, errors before warnings, whether the show loads or not; a warning begins with
  // "warning: ".
  std::vector<std::string> Problems() const;

 private:
  std::filesystem::path path_;
};

// The bytes of a MIDI file of one track with the events given, which end at `endTick`; division 480.
class MidiText {
 public:
  MidiText& Tempo(std::uint32_t tick, std::uint32_t microsecondsPerQuarter);
  MidiText& Meter(std::uint32_t tick, unsigned numerator, unsigned denominator);
  MidiText& Marker(std::uint32_t tick, const std::string& text);
  std::string End(std::uint32_t tick, unsigned division = 480) const;

 private:
  struct Event {
    std::uint32_t tick;
    int type;
    std::string data;
  };
  std::vector<Event> events_;
};

// The problems of song 3, "Waltz", of 48 bars of 4/4 (1920 ticks each) with `toml` beside it, without the
// name of the file: "12:8: ...".
std::vector<std::string> ProblemsOfToml(const std::string& toml);

// The log and the song that come out of it.
struct Song {
  tesk_midi::LoadedShow show;
  const CL::SongLog& Log() const { return show.changeLog->GetSongLog("3"); }
  const tesk_midi::SongData& Data() const { return show.showData->GetSong("3"); }
  const TL::Timeline& Timeline() const { return Data().GetTimeline(); }
};
Song SongOfToml(const std::string& toml);

}  // namespace made_show
