#pragma once

#include <map>
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
      : player_(player),
        songs_(songs),
        rate_(rate),
        dice_(dice),
        mostFrames_(mostFrames),
        changesLeft_(2 * songs.size()) {}

  // Plays song `first`, what follows it attacca and what the performer goes to from there. Returns the index
  // of the song after the last one played, or after `first`.
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
  void ActOnThisSong_(unsigned what);
  void SkipTheNextCaesura_();
  void Go_();
  void GoOnABarLineOfAVamp_();
  void Note_(const std::string& action);
  // ---- to a song's start: duet_songs.cpp
  void ActOnSongs_(unsigned what);
  bool MayChangeSong_();
  void LoadAnySong_();
  void NextSong_();
  void PreviousSong_();
  void StopAndReset_();
  void SetAnyAttacca_();
  void PlayFromStart_(std::size_t song);
  // False when the position stayed where it was.
  bool Seek_(unsigned tick);
  // Of the song and a little behind it; often a caesura.
  unsigned AnyTick_();

  AudioPlayer* player_;
  const std::vector<SongPlan>& songs_;
  unsigned rate_;
  Dice* dice_;
  long long mostFrames_;
  std::size_t index_ = 0;
  std::optional<FlowModel> model_;
  long long framesOfSong_ = 0;
  long long readsOfSong_ = 0;
  long long framesCompared_ = 0;
  long long untilAction_ = 0;
  bool cameByAttacca_ = false;
  std::size_t changesLeft_;               // of the song by the performer, so that every show comes to an end
  std::map<std::size_t, bool> attaccas_;  // that the performer has set
  std::ostringstream actions_;            // of this song, for the message of a failure
};

}  // namespace scenarios
