#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Sources/audio_player/audio_player.h"
#include "suite/core/gui_dispatcher.h"
#include "suite/midi/change_log.h"
#include "suite/midi/show_data.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/support/cranked_output.h"

using Journal = std::vector<std::string>;

// A player of the show "/show" with the songs 1 to 5, among fakes: a decoder with switches, an output without
// a thread, a base with scripted answers. What all of them and the listeners are told is in one journal.
//
// Each song has ticks of 0.0005 s (22.05 samples at 44100), starts at tick 0 and ends at tick 9600.
class PlayerTest : public testing::Test {
 protected:
  PlayerTest();
  ~PlayerTest() override;

  void MakePlayer(const std::vector<std::string>& songsWithoutAudio = {});
  // A player that the test has made itself, of a class of its own: with the deleter's clock held, so that
  // nobody calls it while it is being made, and destroyed by the next operation, so that nobody does while
  // that class goes.
  void TakePlayer(std::unique_ptr<AudioPlayer> player);
  void DestroyOwnPlayer();
  AudioPlayer::SongAudioFiles AudioFiles(const std::vector<std::string>& songsWithoutAudio = {}) const;
  void DestroyPlayer() { player_.reset(); }
  // Makes the player if there is none, loads the song and waits for all loaders. The journal is empty then.
  void LoadReady(const std::string& song);
  void LoadAndPlay(const std::string& song);
  // The same with a neighbour that turns out not to be decodable, once the song itself is in place.
  void LoadReadyWithBrokenNeighbour(const std::string& song, const std::string& neighbour,
                                    fakes::decoder::ErrorKind kind, const std::string& text);

  AudioPlayer& GetPlayer() { return *player_; }
  tesk_audio::AudioPlayerOutputInterface& AsOutputSees() { return *player_; }
  // The one output. There must be one.
  test_support::CrankedOutput& Output() { return *test_support::cranked::Get(); }

  // Where the song's audio lies.
  static std::string Path(const std::string& song);
  // Until no loader's thread is left. Not while one is held, or while the test has threads of its own.
  bool AwaitLoaders();
  // Whether another thread could take the player lock while this one stands here. A loader may hold it for a
  // moment, so a no takes a second.
  bool PlayerLockIsFree();
  // What was told since the last time, all of it or the entries of one ("gui", "output", "notify", ...).
  static Journal Told();
  static Journal Told(const std::string& who);

  // Replaces a song of the show; before the player is made.
  void SetSong(const std::string& number, unsigned audioStart, unsigned audioEnd);

  tesk_midi::ShowData show_;
  CL::ChangeLog changeLog_;
  std::unique_ptr<AudioPlayer> player_;

 private:
  // An object of its own: it is complete before the first and until after the last notification.
  struct Listener : notify::GuiListener {
    void OnPlaybackStarted() override;
    void OnPlaybackPaused() override;
    void OnPlaybackStopped() override;
    void OnPlayerException() override;
    void OnSongLoaded(const std::string& songNumber) override;
  };

  Listener listener_;
  std::ptrdiff_t threadsWithoutLoaders_ = 0;
};
