#pragma once

#include <array>
#include <cstddef>

namespace tesk_audio {

// Whether a stretcher lets steady sound fade: frames of one wave that it puts together out of phase weaken
// each other, for as long as the wave goes on. A new beginning puts them together anew.
//
// What comes out is set against the weakest of what went in lately, so that neither the delay in between nor
// a song that swells or dies away is taken for it.
//
// Units    interleaved frames. What goes in and what comes out of the same chunk in turn.
// Threads  one at a time. Render: allocates nothing.
class LevelWatch {
 public:
  LevelWatch(double rateHz, unsigned channels);

  // As at the beginning.
  void Forget();
  void See(const float* in, std::size_t inFrames, const float* out, std::size_t outFrames);
  // It has for half a tenth of a second by now.
  bool IsWeakened() const;

 private:
  struct Sum {
    double power = 0.0;
    std::size_t frames = 0;

    void Add(const float* samples, std::size_t count, unsigned channels);
    double Mean() const { return power / static_cast<double>(frames); }
  };
  struct Block {
    double in = 0.0;
    double out = 0.0;
  };
  // Those that are averaged, and those before them that are looked back on as well.
  static constexpr std::size_t kAveraged = 5;
  static constexpr std::size_t kBlocks = kAveraged + 4;

  unsigned channels_;
  std::size_t blockFrames_;
  Sum in_;
  Sum out_;
  std::array<Block, kBlocks> blocks_{};
  std::size_t index_ = 0;
  std::size_t known_ = 0;
};

}  // namespace tesk_audio
