#pragma once

#include <string>
#include <vector>

#include "Sources/audio_player/audio_player.h"
#include "reference_suite/audio/output/offline_output.h"
#include "tests/scenarios/random_song.h"
#include "tests/scenarios/song_plan.h"

namespace soak {

// Plays a show offline as fast as it can, with a performer who does something at random every few seconds of
// song time, and checks of every step that the frames heard are those of the position. Failures are reported
// through GoogleTest.
class SoakRun {
 public:
  SoakRun(AudioPlayer* player, const std::vector<scenarios::SongPlan>& songs, unsigned seed)
      : player_(player), songs_(songs), dice_(seed) {}

  // Plays on, with random commands, for so many frames.
  void PlayFrames(long long frames);
  // Into the vamp of the last song and round it for so many frames, without a command.
  void StayInVamp(long long frames);
  // A song that was loaded afresh, played for `reads` reads: every position is where reckoning says.
  void CheckPositionExactly(int reads);

  // Loads `song` (from 0) and stands at its start; every loader has ended and what is unused is freed.
  void Settle(std::size_t song);

  long long FramesHeard() const { return framesHeard_; }
  int CountCommands() const { return commands_; }
  int CountLoads() const { return loads_; }

 private:
  void Load_(std::size_t song);
  // Starts what stands: at a caesura, at the end of a song, after a command that paused.
  void GoOn_();
  void Step_();
  void Hear_(const float* frames, std::size_t count);
  void Act_();
  std::size_t CurrentSong_();

  AudioPlayer* player_;
  const std::vector<scenarios::SongPlan>& songs_;
  scenarios::Dice dice_;
  std::vector<float> heard_;
  long long framesHeard_ = 0;
  int commands_ = 0;
  int loads_ = 0;
};

}  // namespace soak
