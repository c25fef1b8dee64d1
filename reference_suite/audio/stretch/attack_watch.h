#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace tesk_audio {

// Sees attacks in a song as it goes by: sound that is suddenly louder than all of the last moments, as a
// whole or in its high frequencies alone, in all channels together, whatever their phases. Tones that go on,
// swell or beat are none.
//
// Units      interleaved frames.
// Threads    one at a time.
// Render     allocates nothing.
class AttackWatch {
 public:
  AttackWatch(double rateHz, unsigned channels);

  // What comes next has nothing to do with what came before, and shows no attack before it is known. Its
  // frames are `step` of a song frame apart: what beats, beats as slowly in it as it is read densely.
  void Forget(double step);
  // Whether there is an attack in the frames that follow.
  bool See(const float* frames, std::size_t count);

 private:
  static constexpr std::size_t kBlocks = 16;  // longer than half a wave of the lowest tones

  // How loud the last blocks were, and the one under way.
  struct Memory {
    std::array<double, kBlocks> blocks{};
    double loudest = 0.0;
    double now = 0.0;

    bool IsSudden(double quietest) const;
    void Close(std::size_t index);
  };
  bool IsSudden_() const;
  void CloseBlock_();

  double rateHz_;
  std::size_t block_ = 0;  // frames
  std::size_t taken_ = 0;
  std::size_t index_ = 0;
  std::size_t known_ = 0;     // blocks
  std::vector<double> last_;  // frame
  Memory whole_;
  Memory high_;
};

}  // namespace tesk_audio
