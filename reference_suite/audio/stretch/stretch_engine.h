#pragma once

#include <cstddef>
#include <memory>

#include "reference_suite/audio/stretch/stretch_factors.h"

namespace tesk_audio {

// A time-stretcher that works in chunks: frames go in, and whenever another chunk is complete, frames come
// out. Which frame of its input stands where in its output is known only at the middle of a chunk; whoever
// uses it counts frames in and out and keeps the two together.
//
// Units      interleaved frames. What goes in is the song, read at places GetStep() of a song frame apart.
// Threads    one at a time.
// Render     Begin and SetScale may allocate; Process and Retrieve do not, once as many frames have gone
//            through as a chunk has.
class StretchEngine {
 public:
  virtual ~StretchEngine() = default;

  // Forgets everything that was put in.
  virtual void Begin(const StretchFactors& factors) = 0;
  // Song frames from one frame that goes in to the next, at most 1; set by Begin.
  virtual double GetStep() const = 0;
  // What a beginning with these takes, with what is there before it: milliseconds of a core, roughly.
  virtual double GetWorkToBegin(const StretchFactors& factors) const = 0;
  // Whether it can go over to that scale; if not, it must begin anew.
  virtual bool CanGoOnAt(double scale) const = 0;
  // Another tempo scale from the next chunk on, without a click.
  virtual void SetScale(double scale) = 0;

  // How many frames it wants before it can do another chunk, when everything has been retrieved.
  virtual std::size_t GetRequired() = 0;
  // At most kMostFrames at a time. `isAttack`: an attack is among them.
  virtual void Process(const float* frames, std::size_t count, bool isAttack) = 0;
  // Frames that have come out, at most `room`.
  virtual std::size_t Retrieve(float* frames, std::size_t room) = 0;

  // Half a chunk, in frames that go in and in frames that come out. The middle of the first chunk lies there.
  virtual double GetHalfIn() const = 0;
  virtual double GetHalfOut() const = 0;
  // Output frames to be passed over before the first that is used: until chunks overlap as they do from then
  // on and what comes out keeps pace with what goes in.
  virtual double GetRunUp() const = 0;
  // By how many output frames an attack comes out behind the middle of its chunk's place (negative: before
  // it), on the average, at that scale and the transposition of the last Begin.
  virtual double GetAttackOffset(double scale) const = 0;
  // Whether it smears attacks or puts them beside their places, since the last Begin, and is to begin anew at
  // each of them.
  virtual bool SmearsAttacks() const = 0;
  // Whether steady sound can fade in it, since the last Begin.
  virtual bool WeakensSound() const = 0;
  // What comes to it in the first moments after a Begin.
  virtual double GetAttackOffsetAtFirst(double scale) const = 0;

  static constexpr std::size_t kMostFrames = 4096;
};

// Does a chunk of silence, so that nothing is set up later.
std::unique_ptr<StretchEngine> CreateStretchEngine(StretchQuality quality, double rateHz, unsigned channels);

}  // namespace tesk_audio
