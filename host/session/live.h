#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/session/conductor.h"
#include "host/session/failure.h"
#include "host/session/seldom_lines.h"
#include "host/session/session.h"

namespace orbel::host {

struct PlayOptions {
  std::string showPath;
  std::string song;  // empty: the first that can be played
  std::string scriptPath;
  OutputChoice sound;
  std::string output = "auto";  // "jack", "desktop", "null", "file" or, what answers of these, "auto"
  Say say;                      // is told of what is waited for, on any thread; may be empty
  int vampPasses = 1;           // when nobody sits at the keys: how often a vamp is played in all
  double caesuraSilence = 0.0;  // and how long a caesura waits, in seconds
  bool verbose = false;         // also shows what the sound system itself says
};

// What a face shows of a performance; the one copy for all of them.
struct StageStatus {
  std::string song;  // number and name
  std::string position;
  double tempo = 120.0;  // that sounds, in quarter notes per minute
  // "playing", "paused", "waiting at a caesura", "stopped", "ended"; while it plays and nobody hears anything
  // "loading" for a song that is still being decoded, "recovering" when the audio device has failed, and
  // "unheard" when it leads nowhere.
  std::string state;
  std::string next;  // the next cue, for instance "13.1 vamp back to 9.1 (pass 2)"
  // Peak of each channel, ring, latency, load of the render step (median, 99.9th percentile, longest, in
  // percent of the time that it has), dropouts; empty before there is an output.
  std::string sound;
  // In force; tempo has the scale in it already.
  double tempoScale = 1.0;
  int transposition = 0;  // semitones
};

// How a performance stood when it ended.
struct PlayReport {
  StageStatus status;
  Meters meters;  // the peaks are those of the whole performance
  int deviceLosses = 0;
};

// A show that is played to a device. `attended`: somebody sits at the keys and decides; otherwise vamps are
// left and caesuras waited out as the options say, or a script acts, and song follows song to the end of the
// show. Threads    HOST. Poll is called a hundred times a second or so.
class Live {
 public:
  // Opens the show; nothing plays yet. Throws Failure, tesk_midi::ShowError.
  Live(const PlayOptions& options, bool attended);

  // `now`: seconds since playing began. Returns what the operator should read.
  std::vector<std::string> Start();
  std::vector<std::string> Poll(double now);
  std::vector<std::string> Do(const Command& command);

  StageStatus GetStatus();
  bool IsPlaying() const { return session_.IsPlaying(); }
  // It plays, or stands where it goes on from as soon as somebody says so.
  bool IsUnderWay() const;
  // Nobody will act any more and playback stands.
  bool IsOver() const { return over_; }
  // Time passes with every Poll, and not with that of the day.
  bool HasItsOwnTime() const { return writesFile_ && !attended_; }
  // Nobody listens any more: playback stops where it is.
  void Leave() { session_.Leave(); }
  // Nothing is played any more: what was written gets its name. Throws the audio library's error.
  void Finish();
  ExitStatus GetStatusAtEnd() const;
  PlayReport GetReport();

 private:
  void Look_(double now);
  double PlayIntoFile_(double now);
  void TakeEvents_();
  void TakeDeviceUpdates_();
  void DealWithLoss_(const notify::DeviceUpdate& update);
  void DealWithDevice_(const notify::DeviceUpdate& update);
  void Hold_(const std::string& what);
  std::string HowToGoOn_() const;
  void SayWhereItPlays_();
  void SayWhatIsWaitedFor_();
  void TakeMeters_();
  void AskForMeters_();
  void TakeSystemLines_(double now);
  void NoteMeters_(Meters meters);
  std::string SoundText_() const;
  bool ActsAlone_() const { return !attended_ || directions_.script.has_value(); }
  void ActAlone_(double now);
  void GoOnAfterSong_();
  void GoOnAfterBrokenAttacca_();
  void StandAtSong_();
  void EndWith_(ExitStatus status, const std::string& message);
  std::vector<std::string> TakeMessages_();
  std::string NextCue_();
  std::string PassOf_(const Jump& jump) const;

  const OutputChoice sound_;
  const bool writesFile_;
  const bool soundIsWanted_;  // an output that sounds was asked for by name
  const bool attended_;
  const bool verbose_;
  Session session_;
  const Directions directions_;
  Conductor conductor_;
  SeldomLines systemLines_;
  std::string song_;
  TickIndex tick_ = 0;
  StageEvent loop_;  // the pass that has begun last
  std::optional<double> standsSince_;
  std::size_t problemsTold_ = 0;
  Meters meters_;  // the peaks are those since the last look
  bool hasMeters_ = false;
  std::chrono::steady_clock::time_point metersNoted_;
  std::vector<float> highest_;  // peaks of the whole performance
  std::string unheard_;         // why nobody hears the device that there is
  std::string missing_;         // of its connections
  bool deviceIsLost_ = false;
  bool isHeld_ = false;      // by the loss of the device, until somebody plays again
  bool hasSounded_ = false;  // a device that sounds has been there
  int deviceLosses_ = 0;
  double polledAt_ = 0.0;
  std::string loadingToldOf_;  // the song that an attacca was said to wait for
  bool hasPlayed_ = false;
  bool over_ = false;
  ExitStatus statusAtEnd_ = kDone;
  std::vector<std::string> messages_;
};

}  // namespace orbel::host
