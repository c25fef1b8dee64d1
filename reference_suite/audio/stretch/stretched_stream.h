#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "reference_suite/audio/stretch/attack_watch.h"
#include "reference_suite/audio/stretch/in_between_reader.h"
#include "reference_suite/audio/stretch/level_watch.h"
#include "reference_suite/audio/stretch/onset_finder.h"
#include "reference_suite/audio/stretch/stretch_engine.h"
#include "reference_suite/audio/stretch/turned_back.h"

namespace tesk_audio {

// A song played from somewhere on at another tempo or in another key. It reads ahead of what it hands out, by
// itself, so that its delay is none for the listener: the frame asked for is the frame that comes out.
//
// Position   is counted in song frames that the engine has taken, never in output frames times a ratio, since
//            an engine's output drifts. What it has handed out too much or too little is made up for by a
//            ratio that is a little off, before it reaches a millisecond.
// Units      song frames: unscaled, from the start of the audio. Output frames: the device's. Interleaved.
// Threads    one at a time.
// Render     Start and a change of ratio may allocate, inside the engine; nothing else does.
class StretchedStream {
 public:
  static constexpr long long kNever = TurnedBack::kNowhere;
  // Attacks are told this exactly: frames that go in.
  static constexpr long long kExactly = 16;
  // And so much too early, in song frames, where the song is read more densely: an attack is seen in what is
  // read just before it too.
  static constexpr long long kAlmost = kExactly + InBetweenReader::kReach;

  // `source` outlives it. `asksForBeginnings`: whoever plays it has it begin anew at attacks and when it is
  // weakened; without that it says nothing of either, and plays on as it can.
  StretchedStream(std::unique_ptr<StretchEngine> engine, FrameSource& source, double rateHz,
                  unsigned channels, bool asksForBeginnings);

  // From now on the frame of song frame `index` comes out after `lead` frames that belong before it. It reads
  // ahead at once; what stands from `end` on it does not look at, and takes what is before, turned back.
  void Start(long long index, const StretchFactors& factors, std::size_t lead, long long end = kNever);
  // The same little by little: Prepare, and then PrepareFurther as often as it takes. Until then nothing else
  // is asked of it but SetEnd, Stop and the questions about it.
  void Prepare(long long index, const StretchFactors& factors, std::size_t lead, long long end = kNever);
  // Behind Prepare: to it the song is silent before `index`.
  void SetBeginning(long long index) { beginning_ = index; }
  // Does a chunk. Whether it has begun and the next `count` frames are there; then it does nothing.
  bool PrepareFurther(std::size_t count);
  // How much of that is done, from 0 to about 1.
  double GetSharePrepared(std::size_t count) const;
  // Whether that is where and how it began, or is being prepared to.
  bool IsFrom(long long index, const StretchFactors& factors) const {
    return active_ && begun_ == index && factors_ == factors;
  }
  // What a beginning with these takes: milliseconds of a core, roughly.
  double GetWorkToBegin(const StretchFactors& factors) const { return engine_->GetWorkToBegin(factors); }
  void Stop() { active_ = false; }
  bool IsActive() const { return active_; }
  const StretchFactors& GetFactors() const { return factors_; }

  // Another tempo scale from song frame `index` on, which is the next to be asked for. False, and nothing
  // changed, when what was read ahead already would put attacks too far beside their places: begin anew.
  bool ChangeScale(long long index, double scale);
  // Another end; kNever: none.
  void SetEnd(long long index);
  // What it reads from now on is silent: it is not of the song any more.
  void FallSilent() { silence_ = static_cast<long long>(PlaceOf_(fed_)); }
  // Whether it has taken something else for the song at `index`, so that it does not know how that goes on.
  bool IsUnknownAt(long long index) const { return index >= unknownFrom_ || index >= attack_; }
  // The song frame of an attack that it would smear. It has taken neither that nor what is behind it, but
  // what was before, turned back: begin anew there. kNever: none.
  long long GetAttack() const { return attack_; }
  // The song frame of an attack at or right behind the place where it began. kNever: none.
  long long GetFirstAttack() const { return firstAttack_; }
  // The song frame of the first attack that it saw within a hundredth of a second of that place, as heard in
  // it or in the recording, whatever it makes of it. kNever: none.
  long long GetNearAttack() const { return nearAttack_; }

  // Whether steady sound is as loud in it as recorded.
  bool KeepsLevel() const { return !engine_->WeakensSound(); }
  // Whether steady sound has faded in it, which a new beginning would bring back.
  bool IsWeakened() const { return WatchesLevel_() && level_.IsWeakened(); }

  // The next `count` frames, which still come; valid until the next call.
  const float* Peek(std::size_t count);
  void Skip(std::size_t count);
  void Render(float* frames, std::size_t count);
  // The frame that comes next is that of song frame `index`, whatever was said before: what lies between is
  // made up for little by little.
  void DeclareHere(long long index);

  // Output frames by which what it hands out lies behind the song's place.
  double GetError() const { return error_; }

 private:
  bool WatchesLevel_() const { return asksForBeginnings_ && engine_->WeakensSound(); }
  double OffsetAtFirst_() const;
  void PassOverRunUp_();
  void DoChunk_();
  void TurnBack_();
  void Feed_(std::size_t count);
  // Of the next frames that go in, how many are the same whatever stands at song frame `index` and behind it.
  std::size_t CountThatDoNotKnow_(long long index) const;
  // Of the next frames that go in, `count` from the one at `first` on.
  void Read_(std::size_t first, std::size_t count);
  // Whether there is an attack in the next `count` frames that go in.
  bool LookForAttacks_(std::size_t count);
  void Collect_();
  void MeasureError_();
  void Correct_();
  void Fill_(std::size_t count);
  void MakeRoom_();
  // The place in the song of a frame that goes in.
  double PlaceOf_(double fed) const { return origin_ + fed * engine_->GetStep(); }
  double ErrorOf_(double base, long long index, double scale) const;

  std::unique_ptr<StretchEngine> engine_;
  double rateHz_;
  unsigned channels_;
  const bool asksForBeginnings_;
  bool active_ = false;
  StretchFactors factors_;

  double origin_ = 0.0;  // place in the song of the first frame that went in
  double fed_ = 0.0;     // frames that went in
  long long beginning_ = 0;
  long long end_ = kNever;
  long long silence_ = kNever;      // it is silent from there on
  long long unknownFrom_ = kNever;  // it has taken something else from there on
  long long attack_ = kNever;
  long long attackTurn_ = kNever;  // where it turns back for that: it may have taken a part of it before
  long long firstAttack_ = kNever;
  long long nearAttack_ = kNever;
  long long begun_ = 0;     // song frame
  double made_ = 0.0;       // output frames since the engine began
  double middleIn_ = 0.0;   // the middle of the next chunk: song frame,
  double middleOut_ = 0.0;  // and output frame
  // Steady sound of song frame index_ belongs at output frame base_, and goes on from there at the scale.
  long long index_ = 0;
  double base_ = 0.0;
  bool isBased_ = false;
  double error_ = 0.0;
  bool corrects_ = false;
  bool isSettling_ = false;  // until it has begun
  double lead_ = 0.0;        // output frames

  TurnedBack source_;
  InBetweenReader between_;
  AttackWatch watch_;
  OnsetFinder onset_;
  LevelWatch level_;
  std::vector<float> in_;
  std::vector<float> out_;  // made and not handed out yet, from head_ on
  std::size_t head_ = 0;    // frames
  std::size_t ready_ = 0;
};

}  // namespace tesk_audio
