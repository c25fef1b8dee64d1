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
    : ring_(ring),
      channels_(channels),
      fadeFrames_(fadeFrames),
      fade_(channels),
      tail_(fadeFrames, channels),
      taken_(fadeFrames * channels) {
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
  ObeyDrop_(frames);
  ObeyCommand_(command);
  for (std::size_t done = 0; done < frames;) {
    done += ProcessSome_(out + done * channels_, frames - done);
  }
  tail_.MixInto(out, frames);
  PublishAudible_();
  PublishClosed_();
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

void DeviceFeed::ObeyDrop_(std::size_t frames) {
  const std::uint64_t position = dropBefore_;
  const std::uint64_t from = ring_.GetReadPosition();
  if (from >= position) return;
  const bool nothingComes = ring_.GetWritePosition() == position;
  if (open_ && !closing_ && nothingComes && position - from >= frames + fadeFrames_) return;
  if (open_) KeepTail_(position);
  ring_.SkipTo(position);
  fade_.Set(false);
  if (closing_) Close_();
  if (open_) fade_.StartIn(fadeFrames_);
}

void DeviceFeed::KeepTail_(std::uint64_t position) {
  const std::uint64_t left = position - ring_.GetReadPosition();
  Fade fade = fade_;
  fade.StartOut(fadeFrames_, Playable_(static_cast<std::size_t>(std::min<std::uint64_t>(left, fadeFrames_))));
  const std::size_t count = fade.GetLeft();
  ring_.Read(taken_.data(), count);
  fade.Apply(taken_.data(), count);
  tail_.Add(taken_.data(), count);
}

void DeviceFeed::ObeyCommand_(std::uint64_t command) {
  if (NumberOf(command) == obeyed_) return;
  obeyed_ = NumberOf(command);
  const std::size_t fadeFrames = command & kFadeMask;
  if ((command & kOpenBit) != 0) {
    if (!open_) fade_.Set(ring_.GetReadPosition() == refill_);
    open_ = true;
    closing_ = false;
    fade_.StartIn(fadeFrames);
  } else if (open_) {
    closing_ = true;
    FadeOut_(fadeFrames);
    CloseWhenFaded_();
  }
}

// Nothing more may come: the fade ends with the last frame that is there, rather than being cut off by it.
void DeviceFeed::FadeOut_(std::size_t fadeFrames) {
  fade_.StartOut(fadeFrames, Playable_(fadeFrames));
}

std::size_t DeviceFeed::Playable_(std::size_t limit) const {
  const std::uint64_t position = ring_.GetReadPosition();
  const std::uint64_t end = end_;
  const std::uint64_t allowed = end > position ? end - position : 0;
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
  CloseWhenFaded_();
  return count;
}

void DeviceFeed::CloseWhenFaded_() {
  if (closing_ && !fade_.IsUnderWay()) Close_();
}

void DeviceFeed::PublishAudible_() {
  const std::uint64_t taken = ring_.GetReadPosition();
  const std::uint64_t latency = latency_;
  // Silence behind the last frame has pushed it on towards the loudspeaker.
  const std::uint64_t behind = latency > silentFrames_ ? latency - silentFrames_ : 0;
  if (taken > behind && taken - behind > audible_) audible_ = taken - behind;
}

void DeviceFeed::PublishClosed_() {
  if (!open_ && tail_.IsEmpty()) closedBy_ = obeyed_;
}

}  // namespace tesk_audio
