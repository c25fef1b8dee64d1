#pragma once

#include <map>
#include <memory>
#include <string>

#include "Sources/audio_player/audio_player.h"
#include "player_core/player_wrapper/show_data_files.h"
#include "suite/player_core/player_wrapper.h"

// Opens a show folder for playing: loads its data, finds its recorded songs, builds the player and loads the
// first song. The entry point for hosts.
//
// Threads    HOST. Opening takes as long as decoding the first song.
// Ownership  the wrapper owns the player and what it plays from; destroying it ends playback.
class AudioPlayerWrapper : public PlayerWrapper {
 public:
  // `showPath`: the show folder. `leaveOut`: numbers of songs not to play, separated by commas.
  //
  // Throws MP3NoMatchError "No midi data found for song number NUMBER" for recorded audio without a song,
  // PlayerWrapperError when there is no audio to play, and what loading and playing throw.
  AudioPlayerWrapper(const std::string& showPath, const std::string& leaveOut);
  ~AudioPlayerWrapper() override;

  // By number, as the data files say; also of songs that are left out.
  std::map<std::string, std::string, exc::NumericStringCompare> GetSongNames() override;
  // Not owned by the caller. To the player a song that is left out is one without audio.
  AudioPlayer* GetPlayer() override;

 private:
  void RequireMidiDataForEverySong_();
  // For people: what is missing, or what is wrong with each song.
  std::string WhyNothingCanBePlayed_() const;
  // The data files whose songs can be played.
  ShowDataFiles::ByNumber GetPlayableFiles_();

  std::unique_ptr<AudioPlayer> player_;
  ShowDataFiles::ByNumber songNamesByNumber_;
  ShowDataFiles::ByNumber dataFilesByNumber_;
};
