#pragma once

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Sources/audio_player/audio_player.h"
#include "reference_suite/audio/output/offline_output.h"
#include "tests/scenarios/flow_model.h"
#include "tests/scenarios/random_song.h"

namespace scenarios {

// Plays the songs of a show beside the model, with a performer who does something at random now and then, and
// compares every frame. Failures are reported through GoogleTest.
class Duet {
 public:
  // A song with a vamp that nobody leaves is given up after `mostFrames`.
  Duet(AudioPlayer* player, const std::vector<SongPlan>& songs, unsigned rate, Dice* dice,
       long long mostFrames = 500'000)
      : player_(player), songs_(songs), rate_(rate), dice_(dice), mostFrames_(mostFrames) {}

  // Plays song `first` and what follows it attacca. Returns the index of the song after the last one played.
  std::size_t Run(std::size_t first);

  long long FramesCompared() const { return framesCompared_; }

 private:
  void Begin_(std::size_t song);
  bool Step_();
  bool WaitsAtTheStartAfterAttacca_();
  void Compare_(const std::vector<float>& heard);
  bool OnCaesura_();
  bool OnEnd_(bool attacca);
  void Act_();
  void Go_();
  void GoOnABarLineOfAVamp_();
  void Note_(const std::string& action);
  // False when the position stayed where it was.
  bool Seek_(unsigned tick);

  AudioPlayer* player_;
  const std::vector<SongPlan>& songs_;
  unsigned rate_;
  Dice* dice_;
  long long mostFrames_;
  std::size_t index_ = 0;
  std::optional<FlowModel> model_;
  long long framesOfSong_ = 0;
  long long framesCompared_ = 0;
  long long untilAction_ = 0;
  bool cameByAttacca_ = false;
  std::ostringstream actions_;  // of this song, for the message of a failure
};

}  // namespace scenarios
