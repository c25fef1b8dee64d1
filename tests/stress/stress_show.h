#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/scenarios/show_on_disk.h"
#include "tests/scenarios/song_plan.h"

namespace stress {

// A show of short songs with cues of every kind, real files, and what is needed to do them harm.
//
// Threads    ANY for the files; they are the file system's.
class StressShow {
 public:
  static constexpr unsigned kRate = 44100;
  // Plays to its end without a stop, and nothing follows it.
  static constexpr const char* kPlainSong = "6";

  StressShow();

  std::string Path() const { return disk_->Path().string(); }
  unsigned CountSongs() const { return static_cast<unsigned>(songs_.size()); }
  // Songs whose recordings go on long after their end, and are decoded on several threads.
  static constexpr unsigned kLongRecordings[] = {3, 5};
  std::string RecordingOf(unsigned song) const { return File_(song); }
  // The tick behind the last of the longest song.
  unsigned LongestSong() const;

  // Every file as it was. With nobody else at them.
  void Restore();

  // ---- what leaves the show playable: another recording of the same format takes the file's place at once
  void Replace(unsigned song, bool byOgg);
  // ---- what does not
  void Remove(unsigned song);
  void TruncateInPlace(unsigned song, double part);
  void OverwriteInPlace(unsigned song);  // with what is no audio, byte for byte under the reader's eyes
  void ReplaceByOtherFormat(unsigned song);
  void ReplaceByFolder(unsigned song);

 private:
  std::string File_(unsigned song) const;
  void PutInPlace_(unsigned song, const std::string& bytes);
  void MakeRecordings_();

  std::vector<scenarios::SongPlan> songs_;
  std::unique_ptr<scenarios::ShowOnDisk> disk_;
  std::vector<std::string> waves_;
  std::vector<std::string> oggs_;
  std::string otherFormat_;
};

}  // namespace stress
