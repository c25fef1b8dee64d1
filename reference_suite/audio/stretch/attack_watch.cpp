#include "reference_suite/audio/stretch/attack_watch.h"

#include <algorithm>
#include <cmath>

namespace tesk_audio {

namespace {

constexpr double kBlockSeconds = 0.0013;
// How many times the power of the loudest of late an attack has, and the power a frame has at least.
constexpr double kSudden = 4.0;
constexpr double kQuietest = 1e-18;

}  // namespace

AttackWatch::AttackWatch(double rateHz, unsigned channels) : rateHz_(rateHz), last_(channels) {
  Forget(1.0);
}

void AttackWatch::Forget(double step) {
  block_ = static_cast<std::size_t>(std::ceil(kBlockSeconds * rateHz_ / step));
  taken_ = known_ = 0;
  std::fill(last_.begin(), last_.end(), 0.0);
  whole_ = high_ = {};
}

bool AttackWatch::See(const float* frames, std::size_t count) {
  bool isAttack = false;
  for (std::size_t i = 0; i < count; ++i) {
    for (double& last : last_) {
      const auto now = static_cast<double>(*frames++);
      whole_.now += now * now;
      high_.now += (now - last) * (now - last);
      last = now;
    }
    if (++taken_ < block_) continue;
    isAttack = isAttack || IsSudden_();
    CloseBlock_();
  }
  return isAttack || IsSudden_();
}

// Of a block that is not complete yet too: it can only become louder.
bool AttackWatch::IsSudden_() const {
  if (known_ < kBlocks) return false;
  const double quietest = kQuietest * static_cast<double>(block_);
  return whole_.IsSudden(quietest) || high_.IsSudden(quietest);
}

void AttackWatch::CloseBlock_() {
  taken_ = 0;
  whole_.Close(index_);
  high_.Close(index_);
  index_ = (index_ + 1) % kBlocks;
  known_ = std::min(known_ + 1, kBlocks);
}

bool AttackWatch::Memory::IsSudden(double quietest) const {
  return now > quietest && now > kSudden * loudest;
}

void AttackWatch::Memory::Close(std::size_t index) {
  blocks[index] = now;
  now = 0.0;
  loudest = *std::max_element(blocks.begin(), blocks.end());
}

}  // namespace tesk_audio
