#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Sources/types.h"
#include "host/session/device_setup.h"
#include "host/session/script.h"
#include "host/session/show_folder.h"
#include "host/session/stage_events.h"

class AudioPlayer;
class AudioPlayerWrapper;
struct Jump;

namespace orbel::host {

class SongClock;

// What the operator reads while a song is waited for.
std::string LoadingText(const std::string& song);

enum class OutputKind { Live, Offline };

// One open show, and the one table of commands for every face of the program.
//
// Threads    HOST: one thread drives it. With the offline output that thread is the render thread as well.
// Failure    a song whose audio cannot be decoded is left out: a fresh player is built without it, at the
//            same place as far as that is possible, and GetProblems says so.
class Session {
 public:
  // Opens the show and stands at the start of `song` (empty: the first that can be played). Throws Failure,
  // tesk_midi::ShowError.
  // `say` is told of what is waited for longer than a moment, on any thread; it may be empty.
  Session(const std::string& showPath, const std::string& song, OutputKind kind, OutputChoice choice,
          Say say = {});
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // ---- commands.cpp ----------------------------------------------------------------------------
  // Returns what the performer should read; empty when there is nothing to say. Throws Failure for a position
  // that does not exist.
  std::string Do(const Command& command);

  // ---- songs.cpp -------------------------------------------------------------------------------
  // Makes a song current and stands at its start, silent, whatever was going on. Throws Failure.
  void LoadStopped(const std::string& song);
  // False at the end of the show, where the current song is back at its start.
  bool NextSongStopped();
  // No song behind the current one can be played.
  bool IsLastSong() const { return SongFromHere_(1) == GetSongNumber(); }

  // ---- state -----------------------------------------------------------------------------------
  bool IsPlaying() const;
  bool IsPaused() const;
  // The current song is still being decoded: nothing of it can be heard yet.
  bool IsLoading() const;
  // The song has come to its end, and nobody has done anything since.
  bool HasEnded() const { return ended_; }
  // Playback has come to a stand by itself, which the player knows a moment before listeners are told.
  bool IsToldToHaveEndedSoon() const { return played_ && !ended_ && !IsPlaying() && !IsPaused(); }
  // Playback stands at a caesura.
  bool IsWaiting() const;
  TickIndex GetTick() const;
  // Where the last load, seek or caesura has led: what is rendered ahead of that has not been heard while
  // playback stands.
  TickIndex GetLandingTick() const;
  std::string GetSongNumber() const;
  const tesk_midi::SongData& GetSong() const;
  const CL::SongLog& GetLog() const;
  // The clock of the current song at the output's rate.
  const SongClock& GetClock();
  const ShowFolder& GetFolder() const { return folder_; }
  // The next jump if nobody acts; false when there is none.
  bool GetNextJump(Jump* jump) const;
  // Nothing when there is none ahead.
  std::optional<TickIndex> GetNextCaesura() const;
  bool RunsAttacca() const;
  // What is waited for when the current song runs straight into the next; empty when it does not, or for
  // nothing.
  std::string WhatAnAttaccaWaitsFor() const;
  // In force at the control position: the change log's and the performer's together.
  void GetTempoAndKey(double* scale, int* semitones) const;
  // Frames heard since playing began, or went on after a caesura.
  long long GetElapsedFrames() const;
  // Where the listener is, or was when playback came to a stand: what is rendered ahead does not count.
  TickIndex GetHeardTick() const;

  // Nothing is played any more, and nothing waited for that is being decoded: playback stops where it is.
  // Only state is asked for afterwards.
  void Leave();

  // What happened since the last call, oldest first. A failed load is dealt with in here, and so is an
  // attacca that was broken off: AttaccaBrokenOff is told when a fresh player stands at the start of the song
  // that it was to run into, or of the one behind it. Throws PlayerLost.
  std::vector<StageEvent> TakeEvents();

  // What has become of the audio device since the last call, oldest first.
  std::vector<notify::DeviceUpdate> TakeDeviceUpdates() { return events_.TakeDeviceUpdates(); }
  // How the output was doing last, once.
  std::optional<notify::MetersUpdate> TakeMeters() { return events_.TakeMeters(); }

  // Throws the error of the loader that failed last. Only after a LoadFailed event.
  void ThrowLoaderError();
  // The same in words, with song and file; empty when the player that stands now has met none.
  std::string WhatFailedToLoad() const;

  // Why a song cannot be played, for a reader.
  std::string WhyLeftOut(const std::string& song) const;
  // Songs that cannot be played and why, and what else is worth knowing; grows while playing.
  const std::vector<tesk_midi::Problem>& GetProblems() const { return problems_; }

 private:
  // ---- opening.cpp -----------------------------------------------------------------------------
  void ChooseFormat_();
  void ChooseFormatAnew_();
  void LeaveOutShortTicks_();
  std::string WhyNothingCanBePlayed_() const;
  std::string ContentArgument_() const;
  void Build_();
  void BuildOnce_();
  void BuildWithoutBrokenSongs_();
  void TakeOver_(const std::vector<tesk_midi::Problem>& problems);
  void LeaveOut_(const std::string& song, const std::string& why);

  // ---- broken_songs.cpp ------------------------------------------------------------------------
  bool LoadHasFailed_() const;
  std::string GetLoaderError_() const;
  std::string SongNamedIn_(const std::string& error) const;
  std::vector<std::string> SongsInHand_() const;
  bool LeaveOutBrokenSongs_(bool andThoseBehind = false);
  void LeaveOutBrokenBehind_(const std::string& song);
  bool LeaveOutIfBroken_(const std::string& song);

  // ---- refused_songs.cpp -----------------------------------------------------------------------
  bool DoWithoutRefusedSongs_(const std::string& current, const std::function<void()>& attempt);
  std::set<std::string> FindRefusedSongs_(const std::string& current) const;
  std::string FirstSongBut_(const std::set<std::string>& refused) const;

  // ---- commands.cpp ----------------------------------------------------------------------------
  std::string Go_();
  void Play_();
  void PlayWhenLoaded_();
  void StandAgainAt_(TickIndex place, bool leavesCaesura);
  void Stop_();
  // What playing has come to counts no more.
  void BeginAfresh_() { waiting_ = ended_ = played_ = false; }
  std::string SeekRight_();
  void Seek_(const std::string& position);
  std::string SetTempoScale_(double scale);
  std::string SetTransposition_(int semitones);

  // ---- songs.cpp -------------------------------------------------------------------------------
  std::string StepSong_(bool forward);
  bool SettleStopped_();
  void Recover_(const std::string& song);
  void BeginAnew_(const std::string& song);
  void BuildAnew_();
  bool IsAtOrBehind_(const std::string& song) const;
  bool StandAtOrBehind_(const std::string& song);
  void ChangeSong_(const std::string& target, const std::function<void()>& change);
  void WarnOfLoadingAgain_(const std::string& song, const std::string& why);

  // ---- broken_attacca.cpp ----------------------------------------------------------------------
  bool AttaccaIsBrokenOff_(bool hasJustBegun);
  void BeginAfterBrokenAttacca_();
  bool AttaccaHasFailed_() const;
  void BeginAfterFailedAttacca_();

  // ---- waits.cpp -------------------------------------------------------------------------------
  bool CanBePlayed_(const std::string& song) const;
  // Every song that can be played, in running order.
  std::vector<std::string> PlayableSongs_() const;
  // The playable song that many places behind the current one; the current one where there is none.
  std::string SongFromHere_(int places) const;
  // What a change of song, and playing the current one, wait for; empty when for nothing.
  std::string WhatIsWaitedForOnTheWayTo_(const std::string& song) const;
  std::string WhatIsWaitedForAtTheStart_() const;
  std::string WhatIsWaitedForHere_() const;
  // What closing the show waits for.
  std::string WhatIsWaitedForAtTheEnd_() const;

  ShowFolder folder_;
  const OutputKind kind_;
  const std::string wantedSong_;  // empty: any
  const double wantedRateHz_;     // 0: any
  OutputChoice choice_;
  unsigned channels_ = 0;  // of every song that is played
  const Say say_;
  // In one operation, which may build several players until one stands; by the one thread that says so.
  std::set<std::string> toldToWait_;
  std::set<std::string> leftOut_;
  std::string formatSong_;                 // from whose audio the format of the output comes
  std::set<std::string> leftOutByFormat_;  // as long as it holds
  std::vector<tesk_midi::Problem> problems_;
  StageEvents events_;
  const KeptSoundFile keptFile_;
  std::optional<BrokenOffDecoding> brokenOff_;
  std::optional<TickIndex> leftAt_;  // where the listener was then
  std::unique_ptr<AudioPlayerWrapper> wrapper_;
  AudioPlayer* player_ = nullptr;  // the wrapper's
  std::unique_ptr<SongClock> clock_;
  std::string clockSong_;
  std::string loadedSong_;  // the last of which the player told that it is loaded
  bool isOpen_ = false;     // a player has stood
  bool played_ = false;     // and was not asked to stop since
  bool waiting_ = false;
  bool ended_ = false;
};

}  // namespace orbel::host
