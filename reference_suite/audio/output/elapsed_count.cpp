#include "reference_suite/audio/output/elapsed_count.h"

#include <algorithm>

#include "exc/lock/scope_lock.h"

namespace tesk_audio {

ElapsedCount::ElapsedCount(std::size_t blocks) : exc::Lockable("ElapsedCount"), blocks_(blocks) {}

ElapsedCount::~ElapsedCount() = default;

void ElapsedCount::Restart(std::uint64_t position) {
  exc::ScopeLock lock(*this);
  first_ = used_ = 0;
  end_ = position;
  total_ = reported_ = 0;
}

void ElapsedCount::Add(std::size_t deviceFrames, long long songFrames) {
  exc::ScopeLock lock(*this);
  if (deviceFrames == 0) {
    // Less than half a device frame: it has been heard with the frame before.
    total_ += songFrames;
    return;
  }
  const bool oneToOne = static_cast<long long>(deviceFrames) == songFrames;
  const bool follows = used_ > 0 && Last_().songStart + Last_().songFrames == total_;
  if (follows && oneToOne && static_cast<long long>(Last_().deviceFrames) == Last_().songFrames) {
    // The usual case, in which a whole song is one block.
    Last_().deviceFrames += deviceFrames;
    Last_().songFrames += songFrames;
  } else {
    if (used_ == blocks_.size()) {
      first_ = (first_ + 1) % blocks_.size();
      --used_;
    }
    ++used_;
    Last_() = {end_, deviceFrames, total_, songFrames};
  }
  end_ += deviceFrames;
  total_ += songFrames;
}

void ElapsedCount::CountAll() {
  exc::ScopeLock lock(*this);
  reported_ = total_;
}

long long ElapsedCount::GetCount(std::uint64_t position) {
  exc::ScopeLock lock(*this);
  for (std::size_t i = used_; i > 0; --i) {
    const Block& block = blocks_[(first_ + i - 1) % blocks_.size()];
    if (position < block.start) continue;
    const std::uint64_t into = std::min(position - block.start, block.deviceFrames);
    // Rounded down: a frame counts when it has been heard completely. A block is short, a song's one-to-one
    // block is divided by itself; neither product comes near the end of 64 bits.
    const long long heard = block.deviceFrames == static_cast<std::uint64_t>(block.songFrames)
                                ? static_cast<long long>(into)
                                : static_cast<long long>(into * static_cast<std::uint64_t>(block.songFrames) /
                                                         block.deviceFrames);
    reported_ = std::max(reported_, block.songStart + heard);
    break;
  }
  return reported_;
}

}  // namespace tesk_audio
