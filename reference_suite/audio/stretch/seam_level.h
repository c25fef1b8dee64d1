#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace tesk_audio {

// Tones that sound together swell and fade by turns, in the stretcher at other moments than in the recording.
// Where the two meet, a swell may be left out, or come twice: for a fiftieth of a second the music is weaker
// or louder than anywhere around, by up to five decibels, however well the two cross-fade. This finds the
// gain, up and down again within as long, that keeps it between the weakest and the loudest around.
//
// Units    interleaved frames. Gains: factors of a frame.
// Threads  one at a time. Render: allocates nothing after construction.
class SeamLevel {
 public:
  SeamLevel(double rateHz, unsigned channels);

  // A fiftieth of a second: what the level is measured over, what is looked at before and after the seam, and
  // the most that is changed after it.
  std::size_t GetFrames() const { return kWindow * block_; }
  // As much as is to be asked of the music around the seam, which lies in the middle of that.
  std::size_t GetAroundFrames() const { return kAround * block_; }

  // What is heard, as it comes.
  void See(const float* frames, std::size_t count);
  // The last of that, for whoever has not shown it.
  float* Before() { return before_.data(); }
  // The music as recorded.
  void SetAround(const float* around);
  // Whether what is about to be heard, behind what was, is to be changed, by GetGains(). As much of it as is
  // known: at most GetFrames(), of which whole milliseconds count.
  bool Fit(const float* after, std::size_t frames);
  // For those frames.
  const std::vector<float>& GetGains() const { return gains_; }

 private:
  // A millisecond: its power, its loudest sample and the largest change from one step between two to the
  // next.
  struct Block {
    double power = 0.0;
    float peak = 0.0F;
    float bend = 0.0F;
  };
  // A gain that goes up to `1 + height`, or down, for so many blocks and comes back.
  struct Bump {
    double height = 0.0;
    std::size_t rise = 0;
    std::size_t length = 0;

    double At(double block) const;
  };
  static constexpr std::size_t kWindow = 20;
  static constexpr std::size_t kAround = 100;
  using Span = std::array<Block, 2 * kWindow>;

  float GainOf_(const Bump& bump, std::size_t frame) const;
  Block Measure_(const float* frames) const;
  // How far the levels are beyond those of the music around, all in all.
  double BeyondWith_(const Bump& bump) const;
  // Whether a sample, or a bend, would be.
  bool GoesTooFarWith_(const Bump& bump, const float* after) const;
  Bump FindBump_(const float* after) const;
  void LetReach_(const Block& block);

  unsigned channels_;
  std::size_t block_;     // frames
  double weakest_ = 0.0;  // power of a window around
  double loudest_ = 0.0;
  float peak_ = 0.0F;  // how far the music's samples go,
  float bend_ = 0.0F;  // and its bends
  Span span_{};
  std::size_t known_ = 0;  // blocks of it
  std::vector<float> before_;
  std::vector<float> gains_;
};

}  // namespace tesk_audio
