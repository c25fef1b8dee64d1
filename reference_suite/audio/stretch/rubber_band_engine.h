#pragma once

#include <rubberband/RubberBandStretcher.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "reference_suite/audio/stretch/raised_frames.h"
#include "reference_suite/audio/stretch/stretch_engine.h"

namespace tesk_audio {

// Rubber Band's real-time engines. They transpose nothing, for their resampling takes a third of their time.
// Upwards, what they have stretched is played faster; downwards the song is read more densely and stretched
// less. So chunks are never longer in terms of what is heard. Where the faster engine would have to stretch
// by half and more, what begins with an attack stays weak, and beyond twice the length it doubles attacks:
// there the finer one plays whatever was asked for; and where much is left out, the faster one, which is
// nearer to the places of attacks.
//
// Left to itself, the faster engine takes the waves of steady tones for attacks; each time their phases begin
// anew, which puts pure tones up to a semitone beside their pitch. It is allowed to look for attacks only
// where it is told of one; in between it keeps every phase.
class RubberBandEngine : public StretchEngine {
 public:
  RubberBandEngine(StretchQuality quality, double rateHz, unsigned channels);

  void Begin(const StretchFactors& factors) override;
  double GetWorkToBegin(const StretchFactors& factors) const override;
  double GetStep() const override { return step_; }
  bool CanGoOnAt(double scale) const override;
  void SetScale(double scale) override;
  std::size_t GetRequired() override { return stretcher_->getSamplesRequired(); }
  void Process(const float* frames, std::size_t count, bool isAttack) override;
  std::size_t Retrieve(float* frames, std::size_t room) override;
  double GetHalfIn() const override { return halfWindow_; }
  double GetHalfOut() const override { return halfWindow_ / raised_; }
  double GetRunUp() const override;
  double GetAttackOffset(double scale) const override;
  double GetAttackOffsetAtFirst(double scale) const override;
  bool SmearsAttacks() const override;
  bool WeakensSound() const override { return isFaster_; }

 private:
  using Stretcher = RubberBand::RubberBandStretcher;

  StretchQuality QualityFor_(double scale) const { return QualityOf_(pitch_ / scale); }
  StretchQuality QualityOf_(double stretch) const;
  std::size_t RetrieveStretched_(float* frames, std::size_t room);
  void ForgetPhases_();
  void KeepAttacks_(std::size_t count, bool isAttack);

  std::unique_ptr<Stretcher> finer_;
  std::unique_ptr<Stretcher> faster_;
  double load_;             // of this rate and so many channels, as a multiple of stereo at 48 kHz
  StretchQuality quality_;  // asked for
  double mostOfTheFaster_;  // stretch
  Stretcher* stretcher_;    // the one that plays
  bool isFaster_ = false;   // which that is
  double halfWindow_;       // its, in frames
  double pitch_ = 1.0;      // frequency ratio, as a whole,
  double step_ = 1.0;       // by reading the song more densely,
  double raised_ = 1.0;     // and by playing faster what was stretched
  double scale_ = 1.0;      // of the last Begin
  std::size_t keeps_ = 0;   // frames to come that attacks are looked for in
  bool isCrisp_ = true;
  RaisedFrames higher_;
  std::vector<float> stretched_;
  std::vector<std::vector<float>> planes_;  // one channel each
  std::vector<float*> heads_;
};

}  // namespace tesk_audio
