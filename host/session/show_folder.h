#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "suite/audio/create.h"
#include "suite/midi/load_show.h"
#include "suite/utility/numeric_string_compare.h"

namespace orbel::host {

// What lies in the folder of recordings, or why that cannot be known. Read in one go, so that the names and
// the fault never contradict each other.
struct Recordings {
  std::vector<std::string> names;
  std::string fault;
  bool isMissing = false;
};

// A show folder as it lies on disk, without a player: data, cues and the names of the audio files.
// Threads    one at a time.
class ShowFolder {
 public:
  using AudioFiles = std::map<std::string, std::string, exc::NumericStringCompare>;

  // Throws Failure when there is no such folder, tesk_midi::ShowError when it is not a show.
  explicit ShowFolder(const std::string& path);

  const std::string& GetPath() const { return path_; }
  const tesk_midi::ShowData& GetData() const { return *show_.showData; }
  const CL::SongLog& GetLog(const std::string& song) const { return show_.changeLog->GetSongLog(song); }
  const std::vector<tesk_midi::Problem>& GetWarnings() const { return show_.warnings; }

  // Song number to the name of its file in "data".
  const AudioFiles& GetAudioFiles() const { return audioFiles_; }
  bool HasAudio(const std::string& song) const { return audioFiles_.contains(song); }
  // The path of a song's audio, and the same as it is shown: relative to the show folder.
  std::string AudioPath(const std::string& song) const;
  std::string ShownAudioPath(const std::string& song) const;
  // The file of a song's music, and the one in which its cues stand, relative to the show folder.
  std::string MidiFile(const std::string& song) const;
  std::string CueFile(const std::string& song) const;

  // Everything that lies in "data", as it was read once and for all; nothing when that failed.
  const std::vector<std::string>& GetDataNames() const { return recordings_.names; }
  // Why nothing can be known of the folder of recordings, and what to do; empty when it can be read.
  const std::string& GetDataFault() const { return recordings_.fault; }
  // It is merely not there, as in a show whose recordings are still to be made.
  bool LacksData() const { return recordings_.isMissing; }
  // Why a song's music or cues cannot be read; nothing when they can.
  const tesk_midi::Problem* WhyUnreadable(const std::string& song) const;

  // All of them, so that each is known when it is asked for. What is wrong with one is told to who asks.
  void ProbeAll() const;
  // Header and end of a song's audio file. Throws tesk_audio::TESKAudioError.
  tesk_audio::AudioFileInfo Probe(const std::string& song) const;
  // The rate of a song's audio; 44,100 when it has none that can be read.
  double RateOf(const std::string& song) const;

  // The song with this number; the first one that has audio when it is empty. Throws Failure.
  const tesk_midi::SongData& FindSong(const std::string& number) const;

 private:
  std::string path_;
  tesk_midi::LoadedShow show_;
  Recordings recordings_;
  AudioFiles audioFiles_;
};

// The names of the audio files among those of a show's "data" folder, by the number before their first blank.
// A later file with the same number replaces an earlier one, as when the show is opened; `duplicates`
// receives both names.
ShowFolder::AudioFiles FindAudioFiles(const std::vector<std::string>& names,
                                      std::vector<std::string>* duplicates);

}  // namespace orbel::host
