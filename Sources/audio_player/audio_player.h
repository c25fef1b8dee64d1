#pragma once

#include <pthread.h>

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "Sources/audio_player/loaders_inside.h"
#include "Sources/file_loader/content_deleter_thread.h"
#include "Sources/file_loader/file_loader_data.h"
#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/condition/condition.h"
#include "exc/flag/ex_flag.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "suite/audio/output_interface.h"
#include "suite/player_core/gui_update.h"
#include "suite/player_core/player.h"
#include "suite/utility/numeric_string_compare.h"

namespace tesk_audio {
class AudioSampleContent;
class AudioSampleOutput;
}  // namespace tesk_audio

// Plays a show from recorded audio: holds the decoded songs around the current one, hands their samples to
// the output, and keeps what is heard in step with the control position.
//
// Units      tick: MIDI ticks from the start of the song. sample: frames of the song's audio, unscaled.
// Threads    HOST drives the transport, one command at a time; RENDER calls the operations that come from
//            AudioPlayerOutputInterface; UPDATE asks GetAudibleTickIndex; LOADER ends in FileLoaderFinished_;
//            DELETER calls DeleteUnusedAudioContent. Other queries: ANY.
// Locks      the player lock is this object, and recursive. It is never held while a loader is joined,
//            content is freed, or the output is waited for. Operations that open it in the middle are called
//            without it, because one level is all that opening gives up.
// Render     ReadSamples takes the player lock for one look into a map, and waits for nothing else.
// Ownership  everything below; the show data and the change log outlive the player.
class AudioPlayer : public Player, public tesk_audio::AudioPlayerOutputInterface {
 public:
  using SongAudioFiles = std::map<std::string, std::string, exc::NumericStringCompare>;

  // A song has no audio file; what() is its number.
  class NoAudioForSong : public std::out_of_range {
   public:
    explicit NoAudioForSong(const std::string& message) : std::out_of_range(message) {}
  };
  // The output refused a song's audio; what() is the output's text.
  class AudioFormatError : public std::runtime_error {
   public:
    explicit AudioFormatError(const std::string& message) : std::runtime_error(message) {}
  };

  // `showPath`: the show folder. `songAudioFiles`: song number to the name of its file in the folder's
  // "data". Starts the update generator, paused, and the deleter. Throws std::runtime_error when the system
  // gives no thread.
  AudioPlayer(const std::string& showPath, tesk_midi::ShowData& showData, CL::ChangeLog* changeLog,
              SongAudioFiles songAudioFiles);
  // From any state. Ends every thread and frees all audio. May take a second: the deleter wakes that often.
  ~AudioPlayer() override;

  // ==== The player's table ======================================================================

  // ---- transport.cpp: HOST -----------------------------------------------------------------------
  void Pause() override;
  // From PAUSE stopped at once; from PLAY when the output reports it. Throws exc::ExAssertionError when the
  // output runs although the player is stopped.
  void Stop() override;
  // Stops and stands at the start of the song.
  void StopAndReset() override;
  // To the start of the song; the output is left as it is.
  void ResetPlayerNoFillBuffers() override;

  // ---- seek.cpp: HOST ----------------------------------------------------------------------------
  void Seek(unsigned tickIndex) override;
  // Lets every exception through.
  void SeekLeft() override;
  // Never throws: past the last place there is nothing to do.
  void SeekRight() override;

  // ---- navigation.cpp: HOST ----------------------------------------------------------------------
  // Stops, makes the song current and stands at its start; a song that is still being decoded starts playing
  // as soon as it is. Throws NoAudioForSong, AudioFormatError. A load that fails is told to listeners.
  void LoadSong(const std::string& songNumber) override;
  // True only when there is no next song: the current one is back at its start then.
  bool NextSong() override;
  // The start of this song when more than 1920 ticks into it, else the song before.
  void PreviousSong() override;

  // ---- attacca.cpp -------------------------------------------------------------------------------
  // The song that is reached by it is decoded in advance from now on. HOST
  void SetAttaccaState(const std::string& songNumber, unsigned char state) override;
  bool CurrentSongIsAttacca() override;

  // ---- preloading.cpp -------------------------------------------------------------------------------
  // Whether a loader has the song in hand: until it is done, playing the song has to wait. Takes the player
  // lock. ANY
  bool IsBeingDecoded(const std::string& song);

  // ---- shutdown.cpp: HOST ------------------------------------------------------------------------
  // Deletes the output. Only while stopped: throws exc::ExAssertionError and changes nothing otherwise.
  void Shutdown() override;

  // ---- render_path.cpp: ANY ----------------------------------------------------------------------
  // What has been heard since the last refill, and the whole song, in seconds at the output's rate.
  double GetElapsedSeconds() override;
  double GetTotalDurationSeconds() override;

  // ---- forwarding.cpp ----------------------------------------------------------------------------
  gui::GuiUpdate& GetGuiUpdate() override { return guiUpdate_; }
  ShowControl& GetShowControl() override { return showControl_; }
  void Idle() override;
  void PrepareForExit() override;
  void SetTempoScale(double scale) override;
  void SetTransposition(int semitones) override;
  // Accepted and discarded: this player makes no time code.
  void SetTimeCodeCallback(std::function<void(double, double, double)> callback) override;
  void SetFullFrameTimeCodeCallback(std::function<void(double)> callback) override;

  // ==== The output's table: RENDER, unless said otherwise ========================================
  // The order of these declarations is the order of their slots: add at the end, never insert.

  void AddToSampleIndex(long long samples) override;
  tesk_audio::SampleCount GetNextReadSampleCount(tesk_audio::SampleCount requested) override;
  void ProcessLoopEventsAtCurrentTickIndex() override;
  long long GetSampleIndex() override;
  long long GetNextCaesuraSampleIndex(long long sampleIndex) override;
  void PauseAndClearApproachingStop() override;
  // From now on the audible tick does not pass the control position.
  void NotifyApproachingStop() override;
  long long GetLastJumpSampleIndex() override;
  long long GetJumpTargetSampleIndex() override;
  bool GetJumpIsNext() override;
  bool GetCutToEndOfSongIsNext() override;
  // Waits for flags and loaders: call it without the read-samples lock. Throws EndOfShow, NoAudioForSong,
  // AudioFormatError. A load that fails is told to listeners, and GetAttaccaHasOccurred stays false.
  void LoadNextSongAttacca() override;
  // Playback stands at a caesura. True: it was passed through, play on.
  bool OnCaesuraStop() override;
  void NotifyOutputHasStopped() override;
  // Reads at `sampleIndex` and moves nothing. Without decoded audio: 0, and the count stays.
  long long ReadSamplesAt(long long sampleIndex, long long* ioCount, void* buffer) override;
  // Reads at the sample index and moves it on by the count, which becomes what was read. Without decoded
  // audio nothing is written, 0 is returned, and the index moves on by the whole count: the song runs on in
  // silence. Throws exc::ExAssertionError, after the read, for a scale other than 1.
  long long ReadSamples(tesk_audio::SampleCount* ioPacketCount, void* buffer) override;
  void GetDspFactorsAtCurrentTickIndex(long double* scale, int* transposition) override;
  void GetDspFactorsAtCurrentSampleIndex(long double* scale, int* transposition) override;
  void GetDspFactorsAt(long long sampleIndex, long double* scale, int* transposition) override;
  exc::ExLock& GetReadSamplesLock() override;
  void SkipAheadSamplesOnNextJump(unsigned samples) override;
  void AdjustNextJumpSampleIndex(long long samples) override;
  // Realign after the output was restarted from a fault, at `sampleIndex` or a little after it. The output
  // does not read meanwhile. Throw RecoveryReachedEndOfSong.
  void ResetForRecovery(long long sampleIndex, long long elapsedSampleCount) override;
  void ResetForRecoveryAdvance(long long sampleIndex, long long elapsedSampleCount) override;
  // Read once: true at most once per setting.
  bool GetAttaccaHasOccurred() override;
  // Starts the output unless playing; waits for the song's loader first. A load that failed is told to
  // listeners and nothing plays. HOST, LOADER
  void Play() override;
  // Stops the output and stands at the start of the song. When the output cannot be stopped that is said on
  // the console and everything else stays. HOST
  void ResetPlayer() override;
  // Read once, as is the next.
  bool GetUserRequestedSeek() override;
  bool GetSeekRequestedWhileNotPlay() override;

  // ==== Beyond the tables ========================================================================

  // ---- flags.cpp: ANY ----------------------------------------------------------------------------
  void SetLoadSongAttaccaIsWaiting();
  void SetUserRequestedSeek(bool requested);
  bool GetStopRequested();
  void SetStopRequested(bool requested);

  // ---- render_path.cpp: ANY ----------------------------------------------------------------------
  // Throws SongNotLoaded.
  tesk_audio::AudioSampleContent* GetCurrentSongContent();
  // Frames; 0 without decoded audio.
  double GetTotalSampleCount();
  // The output's; without an output 0, and the rate with which the converter starts.
  long long GetElapsedSampleCount();
  double GetSampleRateHz();

  // ---- audible_position.cpp ----------------------------------------------------------------------
  // The tick that the listener hears now. True while playing. Not with the player lock held. UPDATE, HOST
  bool GetAudibleTickIndex(unsigned* outTick);

  // ---- loader_errors.cpp -------------------------------------------------------------------------
  // Takes over what a loader reported, and wakes who waits for it. True when it failed.
  bool CheckFileLoaderExceptions(FileLoaderData* fld) EXC_HOLDS(this);
  // Whether any loader has failed so far. Waits once, for the first report.
  bool GetFileLoaderErrorOccurred();
  // Throws the error that failed last, again and again: nothing clears it.
  void ThrowIfThreadExceptions();

  // ---- content_deletion.cpp: DELETER -------------------------------------------------------------
  void DeleteUnusedAudioContent();

 private:
  friend void AudioPlayer_FileLoaderFinished(FileLoaderData* fld);
  // What became of a song that was to be put in place: it is; its loader will do it; it failed.
  enum class Placement { Ready, Loading, Failed };

  // ---- seek.cpp ----------------------------------------------------------------------------------
  // The seek itself. Throws exc::ExAssertionError when the output runs although the player is stopped.
  void DoSeek_(unsigned tickIndex) override;
  void StandAtSoughtPosition_();

  // ---- flags.cpp ---------------------------------------------------------------------------------
  void SetAttaccaHasOccurred_(bool occurred);
  bool IsOutputInitialized_();
  void IsOutputInitialized_(bool initialized);
  // Null without an output. It stays until Shutdown or the destructor, which see to it that nobody uses it.
  tesk_audio::AudioSampleOutput* Output_();
  // Behind a start that is under way.
  bool OutputRuns_();
  void RequireNoRunningOutputInStop_(const char* function, int line);

  // ---- transport.cpp -----------------------------------------------------------------------------
  void StartUnlessPlaying_();
  // True when the state was another one.
  bool EnterPlay_();
  // True when the state was PLAY.
  bool EnterPause_();
  void StartOutput_();
  // True when the state is PLAY.
  bool StartAgainIfPlaying_();
  // While it is `PLAY`, the output has been told to start.
  PlayerState GetStateBetweenStarts_();
  // False when the output does not stop, however often it is asked.
  bool StopRunningOutput_();
  void RefillOutput_();

  // ---- navigation.cpp ----------------------------------------------------------------------------
  void LoadThenResetOrReport_(const std::string& songNumber);
  // From `from`, or from the current song when it is empty. Throw EndOfShow, StartOfShow.
  std::string GetNextSongWithAudio_(const std::string& from);
  std::string GetPreviousSongWithAudio_(const std::string& from);

  // ---- attacca.cpp, caesura.cpp, recovery.cpp ----------------------------------------------------
  void LoadSongAttacca_(const std::string& songNumber);
  // True when a running output was told to stop.
  bool SeekToCaesuraStop_();
  void ClearFlagsForRecovery_() EXC_UNCHECKED_LOCKING;

  // ---- preloading.cpp: called without the player lock ---------------------------------------------
  // Brings cache and loaders to the current song and its neighbours.
  void PreLoadAudio_();
  std::set<std::string> GetWantedSongs_() EXC_HOLDS(this);
  void QueueUnwantedContents_(const std::set<std::string>& wanted) EXC_HOLDS(this);
  void StartMissingLoaders_(const std::set<std::string>& wanted) EXC_HOLDS(this);
  // Waits for the song's loader, if it has one, and discards what it has decoded.
  void CleanUpFileLoaderThread_(const std::string& song);
  tesk_audio::AudioSampleContent* TakeDiscardedContent_(const FileLoaderData& fld) EXC_HOLDS(this);
  bool IsCurrentSong_(const std::string& song);
  void CleanUpExtraFileLoaderThreads_(std::set<std::string> songsToKeep);

  // ---- song_loading.cpp: called without the player lock --------------------------------------------
  // Makes the song current; true when its audio is in place. Throws NoAudioForSong, AudioFormatError.
  bool DoLoadSongAndGetIsFinished_(const std::string& song);
  Placement PutSongInPlace_(const std::string& song);
  bool MayBeRead_(const tesk_audio::AudioSampleContent& content) EXC_HOLDS(this);
  void NoteTaken_(const tesk_audio::AudioSampleContent& content) EXC_HOLDS(this);
  void SwitchOutputTo_(const tesk_audio::AudioSampleContent& content) EXC_HOLDS(this);
  // Before the first read of a song is planned: the converter has its rate, the shown tick is its start.
  void TakeOverRateAndStart_();
  // Waits for the song that is awaited, if any; false when any loader has failed so far.
  bool WaitForLoaderAndGetNoErrors_();
  bool WaitUnlockedForLoader_() EXC_HOLDS(this);
  static void WaitForCancelAndPassItOn_(exc::ExFlag& flag);
  void WaitForLoader_(exc::ScopeLock& lock, std::string song, FileLoaderData* fld) EXC_HOLDS(this);

  // ---- loader_finished.cpp: LOADER -----------------------------------------------------------------
  void FileLoaderFinished_(FileLoaderData* fld);
  // True when playback is to start now.
  bool PutAwaitedSongInPlace_() EXC_HOLDS(this);
  void ReleaseRecord_(FileLoaderData* fld);
  bool LoaderIsInMap_(const std::string& song, const FileLoaderData* fld) EXC_HOLDS(this);
  void TakeLoaderOutOfMap_(const std::string& song, const FileLoaderData* fld) EXC_HOLDS(this);

  // ---- shutdown.cpp ------------------------------------------------------------------------------
  std::unique_ptr<tesk_audio::AudioSampleOutput> TakeOutput_() EXC_HOLDS(this);
  void DeleteOutput_(std::unique_ptr<tesk_audio::AudioSampleOutput> output);
  void WaitForFinishingLoader_();
  void EndLoaders_();
  void EndLoadersOneByOne_();
  void FreeAllContents_();

  SamplesTicksConverter samplesTicksConverter_;
  gui::GuiUpdate guiUpdate_;
  OBShowControl showControl_;

  unsigned audibleTickIndex_ EXC_GUARDED_BY(this) = 0;
  unsigned attaccaHoldSampleCount_ EXC_GUARDED_BY(this) = 0;
  unsigned approachingStopTickIndex_ EXC_GUARDED_BY(this) = 0;

  bool outputIsInitialized_ EXC_GUARDED_BY(this) = false;
  bool loadSongAttaccaIsWaiting_ EXC_GUARDED_BY(this) = false;
  // Atomic because a recovery writes these without the lock, as its contract wants; all else holds it.
  std::atomic<bool> userRequestedSeek_ EXC_GUARDED_BY(this) = false;
  std::atomic<bool> seekRequestedWhileNotPlay_ EXC_GUARDED_BY(this) = false;
  std::atomic<bool> attaccaHasOccurred_ EXC_GUARDED_BY(this) = false;
  std::atomic<bool> attaccaAudibleHold_ EXC_GUARDED_BY(this) = false;
  std::atomic<bool> stopRequested_ EXC_GUARDED_BY(this) = false;
  bool approachingStop_ EXC_GUARDED_BY(this) = false;

  // Written by CheckFileLoaderExceptions alone; nothing resets them.
  bool loaderResultReady_ EXC_GUARDED_BY(this) = false;
  bool loaderErrorOccurred_ EXC_GUARDED_BY(this) = false;
  int loaderErrorId_ EXC_GUARDED_BY(this) = 0;
  std::string loaderErrorReason_ EXC_GUARDED_BY(this);

  std::map<std::string, tesk_audio::AudioSampleContent*> decodedContents_ EXC_GUARDED_BY(this);
  std::deque<tesk_audio::AudioSampleContent*> contentsToDelete_ EXC_GUARDED_BY(this);
  std::map<std::string, FileLoaderData*> fileLoaders_ EXC_GUARDED_BY(this);
  const SongAudioFiles songAudioFiles_;

  exc::ExFlag waitForAudio_;           // the reason is the song that is waited for
  exc::ExFlag playerIsResetting_;      // waited on before a load
  exc::ExFlag fileLoaderIsFinishing_;  // the awaited song is being put in place on its loader thread
  exc::Condition loaderCondition_;     // a loader has reported
  exc::Condition loaderLeftMap_;       // a loader is done: broadcast with the player lock held

  // Held from entering `PLAY` until the output has been told to start. Before the player lock; nobody waits
  // for anything with it.
  exc::RLockable startLock_{"PlaybackStart"};
  std::unique_ptr<tesk_audio::AudioSampleOutput> audioSampleOutput_ EXC_GUARDED_BY(this);
  bool isEnding_ EXC_GUARDED_BY(this) = false;  // being destroyed: no output is made any more
  // Rate and channels of what the output took last.
  std::pair<double, unsigned> playedFormat_ EXC_GUARDED_BY(this){};

  const std::shared_ptr<LoadersInside> loadersInside_ = std::make_shared<LoadersInside>();
  pthread_t deleterThread_{};
  std::unique_ptr<AudioContentDeleterThreadData> deleterThreadData_;
};

// Given to loader threads as their finished callback; the record's user data is the player. LOADER
void AudioPlayer_FileLoaderFinished(FileLoaderData* fld);

// Given to the deleter thread; `player` is the AudioPlayer. DELETER
void AudioPlayer_AudioContentDeleter(void* player);
