#include "reference_suite/audio/output/device_feed.h"

#include <algorithm>

namespace tesk_audio {

namespace {

constexpr std::uint64_t kOpenBit = 1ULL << 31U;
constexpr std::uint64_t kFadeMask = kOpenBit - 1;

std::uint32_t NumberOf(std::uint64_t command) {
  return static_cast<std::uint32_t>(command >> 32U);
}

}  // namespace

DeviceFeed::DeviceFeed(FrameRing& ring, unsigned channels, std::size_t fadeFrames)
    : ring_(ring), channels_(channels), fadeFrames_(fadeFrames), fade_(channels) {
  fade_.Set(false);
}

void DeviceFeed::Command_(bool open, std::size_t fadeFrames) {
  const std::uint64_t number = NumberOf(command_) + 1ULL;
  command_ = number << 32U | (open ? kOpenBit : 0) | (fadeFrames & kFadeMask);
}

void DeviceFeed::Open() {
  Command_(true, fadeFrames_);
}

void DeviceFeed::Close(std::size_t fadeFrames) {
  Command_(false, fadeFrames);
}

void DeviceFeed::DropBefore(std::uint64_t position) {
  dropBefore_ = position;
}

bool DeviceFeed::IsClosed() const {
  return closedBy_ == NumberOf(command_);
}

void DeviceFeed::Process(float* out, std::size_t frames) noexcept {
  // The command first: what was dropped before it was given is then surely seen.
  const std::uint64_t command = command_;
  waitedFrames_ = 0;
  ObeyDrop_();
  ObeyCommand_(command);
  for (std::size_t done = 0; done < frames;) {
    done += ProcessSome_(out + done * channels_, frames - done);
  }
  PublishAudible_();
}

// While it is closed or closing, or a command waits to be obeyed, what is missing is not meant to be heard.
// Frames that are to be dropped do not count.
bool DeviceFeed::IsReady(std::size_t frames) const noexcept {
  waitedFrames_ = 0;
  if (!open_ || closing_ || IsCommanded_()) return true;
  const std::uint64_t from = std::max<std::uint64_t>(ring_.GetReadPosition(), dropBefore_);
  const std::uint64_t to = ring_.GetWritePosition();
  const bool lacks = to < from + frames && to < end_;
  if (lacks) waitedFrames_ = frames;
  return !lacks;
}

bool DeviceFeed::IsCommanded_() const {
  return NumberOf(command_) != obeyed_;
}

void DeviceFeed::ObeyDrop_() {
  const std::uint64_t position = dropBefore_;
  if (ring_.GetReadPosition() >= position) return;
  if (!open_) {
    ring_.SkipTo(position);
    return;
  }
  drop_ = position;
  const bool begins = !dropping_ && !closing_;
  dropping_ = true;
  if (begins) FadeOut_(fadeFrames_);
  if (!fade_.IsUnderWay()) FinishFade_();
}

void DeviceFeed::ObeyCommand_(std::uint64_t command) {
  if (NumberOf(command) == obeyed_) return;
  obeyed_ = NumberOf(command);
  const std::size_t fadeFrames = command & kFadeMask;
  if ((command & kOpenBit) != 0) {
    if (!open_) fade_.Set(ring_.GetReadPosition() == refill_);
    open_ = true;
    closing_ = false;
    if (!dropping_) fade_.StartIn(fadeFrames);
  } else if (open_) {
    closing_ = true;
    FadeOut_(fadeFrames);
    if (!fade_.IsUnderWay()) FinishFade_();
  } else {
    closedBy_ = obeyed_;
  }
}

// Nothing more may come: the fade ends with the last frame that is there, rather than being cut off by it.
void DeviceFeed::FadeOut_(std::size_t fadeFrames) {
  fade_.StartOut(fadeFrames, Playable_(fadeFrames));
}

std::size_t DeviceFeed::Playable_(std::size_t limit) const {
  const std::uint64_t position = ring_.GetReadPosition();
  // What is being dropped must not run on into the frames that come instead.
  const std::uint64_t border = dropping_ ? drop_ : end_.load();
  const std::uint64_t allowed = border > position ? border - position : 0;
  return std::min({limit, ring_.GetAvailable(), static_cast<std::size_t>(allowed)});
}

std::size_t DeviceFeed::ProcessSome_(float* out, std::size_t frames) {
  if (!open_) {
    std::fill_n(out, frames * channels_, 0.0F);
    silentFrames_ += frames;
    return frames;
  }
  const std::size_t limit = fade_.IsUnderWay() ? std::min(frames, fade_.GetLeft()) : frames;
  std::size_t count = Playable_(limit);
  if (count > 0) {
    ring_.Read(out, count);
    silentFrames_ = 0;
  } else if (dropping_) {
    FinishFade_();
    return 0;
  } else if (ring_.GetReadPosition() == end_) {
    Close_();
    return 0;
  } else {
    // Nothing is ready: silence for exactly the frames that are missing, through which a fade goes on.
    count = limit;
    std::fill_n(out, count * channels_, 0.0F);
    underrunFrames_ += static_cast<long long>(count);
    silentFrames_ += count;
  }
  fade_.Apply(out, count);
  if (!fade_.IsUnderWay()) FinishFade_();
  return count;
}

void DeviceFeed::FinishFade_() {
  if (dropping_) {
    dropping_ = false;
    ring_.SkipTo(drop_);
    fade_.Set(false);
    if (!closing_) fade_.StartIn(fadeFrames_);
  }
  if (closing_) Close_();
}

void DeviceFeed::Close_() {
  open_ = closing_ = false;
  closedBy_ = obeyed_;
}

void DeviceFeed::PublishAudible_() {
  const std::uint64_t taken = ring_.GetReadPosition();
  const std::uint64_t latency = latency_;
  // Silence behind the last frame has pushed it on towards the loudspeaker.
  const std::uint64_t behind = latency > silentFrames_ ? latency - silentFrames_ : 0;
  if (taken > behind && taken - behind > audible_) audible_ = taken - behind;
}

}  // namespace tesk_audio
