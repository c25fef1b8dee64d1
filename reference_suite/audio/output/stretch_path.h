#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "reference_suite/audio/output/cross_fade.h"
#include "reference_suite/audio/stretch/attack_watch.h"
#include "reference_suite/audio/stretch/late_read.h"
#include "reference_suite/audio/stretch/seam_level.h"
#include "reference_suite/audio/stretch/stretched_stream.h"
#include "reference_suite/audio/stretch/turned_back.h"
#include "suite/audio/output_interface.h"

namespace tesk_audio {

// Turns the frames of reads into the frames of the device: as they are at tempo scale 1 and transposition 0,
// with nothing of the stretcher on their way; stretched otherwise. The frame that is due is the frame that
// comes out, so that a read's device frames stand for exactly its song frames. Where sounds meet that do not
// go on from one another, they cross-fade where they fit together best. Of what stands behind a caesura
// nothing is heard before playback has come there.
//
// Units      `index`, `count`: frames of song audio, unscaled. What Render gives: frames of the device.
// Threads    one at a time.
// Locks      the player's read-samples lock is held by whoever calls Turn and Render.
// Render     allocates nothing at scale 1 and transposition 0; otherwise what the stretcher does.
class StretchPath : private FrameSource {
 public:
  // `mostFrames`: the longest read.
  StretchPath(AudioPlayerOutputInterface& player, CrossFade& fade, StretchQuality quality, StretchPace pace,
              double rateHz, unsigned channels, std::size_t mostFrames);

  // The longest cross-fade with stretched sound. Its last frames have to be there before the stretcher can
  // begin anew, so that they are made at once: a long one would keep the render thread from its time.
  static std::size_t MostSeamFrames(double rateHz);
  // The same with the gain that keeps the level behind it.
  static std::size_t MostFadeFrames(double rateHz);
  // The most device frames that a read can become.
  std::size_t GetMostFrames() const { return out_.size() / channels_; }

  // What the frames to come have to do with those before.
  struct Place {
    long long index = 0;      // first frame of the read
    long long before = 0;     // the frame that would have come next, the same unless a jump was taken
    bool isNextSong = false;  // which the one before runs into
    long long stop = -1;      // after a jump: the caesura that lies at or behind `before`; -1: none
  };
  // Before the read: leads over to it. Where a device waits and a beginning would take too long, another
  // tempo or key acts a moment later, unless the show has it written. Throws what the player throws.
  void Turn(const Place& place, const StretchFactors& wanted);
  // After the read: `frames` are the ones read. How many device frames they became; those are at Frames().
  std::size_t Render(long long index, float* frames, std::size_t count);
  float* Frames() { return frames_; }

  // What comes next has nothing to do with what came before.
  void Drop();
  // The same, and what would have come next had the song gone on at `index`: at most `count` device frames,
  // as many as there are before the caesura at `stop` (-1: none ahead), and at most a read's.
  std::size_t DropTail(long long index, long long stop, float* out, std::size_t count);

 private:
  void ReadAt(long long index, float* frames, std::size_t count) override;
  std::unique_ptr<StretchedStream> MakeStream_(StretchQuality quality, StretchPace pace, double rateHz);
  bool GoesOn_(const Place& place, const StretchFactors& wanted);
  void GoOver_(const Place& place, const StretchFactors& wanted);
  void NoteStop_(long long index);
  StretchFactors FactorsInForce_(const Place& place, const StretchFactors& wanted);
  StretchFactors Await_(long long index, const StretchFactors& wanted);
  void LookAhead_(long long index, const StretchFactors& wanted);
  void FindWritten_(long long index, const StretchFactors& wanted, long long until);
  StretchFactors FactorsAt_(long long index);
  static StretchFactors Limited_(const StretchFactors& factors);
  StretchFactors GetFactors_() const;
  bool TakesLong_(const StretchFactors& wanted) const;
  long long FramesToPrepare_(double work) const;
  void ForgetChange_();
  void MakeChange_();
  bool PreparesChange_(long long index, long long count);
  void PrepareUntil_(long long border, std::size_t ahead, long long soon);
  void TakeTail_(long long index, float* out, std::size_t count);
  std::size_t SeamLength_(const Place& place) const;
  bool IsSteady_(const Place& place, long long attack, double scale) const;
  std::size_t SeamWithAttack_(std::size_t length, long long behind, double scale, bool isRecorded) const;
  void TakeOutgoing_(const Place& place, std::size_t length, long long turn = StretchedStream::kNever);
  void TakeRecorded_(const Place& place, std::size_t length, long long turn);
  void TurnAt_(long long index);
  void TakeBeginning_(long long index, std::size_t length, bool isAlone, long long turn);
  void BeginStream_(const Place& place, const StretchFactors& wanted);
  long long BorderFrom_(long long index) const;
  long long AttackBorder_() const;
  void BeginAnewAt_(long long index);
  void PrepareNext_(long long index, long long soon);
  bool HasAttackSoon_(long long index);
  bool RisesOutOfLittle_(long long index);
  void LayAttackOver_(long long known, long long index, std::size_t length, double scale);
  std::size_t AttackSeam_() const;
  void JoinStream_(long long index, std::size_t length, std::size_t reach);
  void BeginFade_(const float* coming, std::size_t length, bool mayBeShort);
  std::size_t RenderStretched_(float* out, std::size_t count);
  void SeeAround_(long long index);
  void LevelSeam_(const float* coming, std::size_t known);
  void JumpAsRecorded_(const Place& place);
  void LeaveStream_(const Place& place);

  AudioPlayerOutputInterface& player_;
  CrossFade& fade_;
  double rateHz_;
  unsigned channels_;
  std::size_t seam_;
  std::size_t mostSeam_;
  std::size_t reach_;                        // how far beside its place a sound may begin so that it fits
  std::size_t near_;                         // and how far it may where attacks matter
  std::size_t lead_;                         // device frames
  std::unique_ptr<StretchedStream> stream_;  // what plays,
  std::unique_ptr<StretchedStream> next_;    // and what will, from an attack on
  long long preparedFrom_ = 0;               // the next frame when that was begun with
  bool isInTime_;                            // a device waits
  // A change of tempo or key that is being prepared.
  struct Change {
    long long at = StretchedStream::kNever;
    StretchFactors to;
    bool isWritten = false;  // in the show: it acts there and nowhere else
  };
  Change change_;
  long long writtenAt_ = StretchedStream::kNever;  // the next change that is written, if it is near
  StretchFactors writtenTo_;
  long long waitsSince_ = StretchedStream::kNever;  // a change, for an attack
  TurnedBack turned_;
  LateRead late_;
  AttackWatch watch_;
  SeamLevel level_;
  std::size_t known_;            // frames that it is shown at a time
  std::size_t levels_ = 0;       // frames to come that it is for
  std::vector<float> around_;    // the music around a seam, and what it becomes
  std::vector<float> incoming_;  // frames to compare
  std::vector<float> out_;
  float* frames_ = nullptr;
  long long stop_ = StretchedStream::kNever;  // the next caesura: what stands behind it is silent to us
  double due_ = 0.0;                          // device frames that rounding has kept back
  bool isSounding_ = false;                   // there is something before
};

}  // namespace tesk_audio
