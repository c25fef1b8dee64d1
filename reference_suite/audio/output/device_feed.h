#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/output/dropped_tail.h"
#include "reference_suite/audio/output/fade.h"
#include "reference_suite/audio/output/frame_ring.h"

namespace tesk_audio {

// What the device hears: frames out of the ring while it is open, silence while it is closed. Opening and
// closing take effect in the device's next period, with a fade; the device itself runs on.
//
// Units      frames; positions are those of the ring.
// Threads    Process on the device's thread. Commands by any thread, one at a time by agreement of the
//            callers. Queries by any thread.
// Render     Process takes no lock, allocates nothing, calls nobody: all that it shares is atomic.
class DeviceFeed : public DeviceCallback {
 public:
  // `fadeFrames`: on opening, and where frames are dropped; 0 leaves every sample as it is.
  DeviceFeed(FrameRing& ring, unsigned channels, std::size_t fadeFrames);

  // ---- commands
  // Fades in, unless the next frame is the first after a refill.
  void Open();
  // Fades out over that many frames of the ring, or as many as it holds; what follows them stays for the next
  // opening.
  void Close(std::size_t fadeFrames);
  // Frames before `position` are heard no more: they fade out under those behind it, when they are being
  // heard now. While there are none yet, and enough of them, they go on.
  void DropBefore(std::uint64_t position);
  // The frame at `position` is the first after a refill.
  void SetRefill(std::uint64_t position) { refill_ = position; }
  // Closes by itself, without a fade, when it has come to `position`.
  void EndAt(std::uint64_t position) { end_ = position; }
  void ClearEnd() { end_ = kNever; }
  // What has been taken and not been heard is the next to be heard again, as far as the ring keeps it. Only
  // while nobody asks.
  void TakeBackUnheard() { ring_.GoBackTo(audible_); }
  // What the device reports; frames.
  void SetLatency(unsigned frames) { latency_ = frames; }

  // ---- queries
  // Whether the last command was to close, or the end was reached, and the device has obeyed.
  bool IsClosed() const;
  // Up to where the listener has heard. Never decreases.
  std::uint64_t GetAudiblePosition() const { return audible_; }
  // Frames of silence because the ring ran short.
  long long GetUnderrunFrames() const { return underrunFrames_; }
  // Who asks for more frames than there are, and waits for so many; 0: nobody waits.
  std::size_t GetWaitedFrames() const { return waitedFrames_; }

  void Process(float* out, std::size_t frames) noexcept override;
  bool IsReady(std::size_t frames) const noexcept override;
  bool IsAwaited() const noexcept override { return closing_ || IsCommanded_(); }

 private:
  static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

  bool IsCommanded_() const;
  void Command_(bool open, std::size_t fadeFrames);
  void ObeyCommand_(std::uint64_t command);
  void ObeyDrop_(std::size_t frames);
  // The frames up to `position` that still fade out.
  void KeepTail_(std::uint64_t position);
  // Some frames, at least one; returns how many.
  std::size_t ProcessSome_(float* out, std::size_t frames);
  // Frames of the ring that may be heard now, at most `limit`.
  std::size_t Playable_(std::size_t limit) const;
  void FadeOut_(std::size_t fadeFrames);
  void CloseWhenFaded_();
  void Close_() { open_ = closing_ = false; }
  void PublishAudible_();
  void PublishClosed_();

  FrameRing& ring_;
  unsigned channels_;
  std::size_t fadeFrames_;

  // The last command: its number in the upper half, then whether to open, then the fade's frames.
  std::atomic<std::uint64_t> command_{0};
  std::atomic<std::uint32_t> closedBy_{0};  // number of the command under which the feed is closed
  std::atomic<std::uint64_t> dropBefore_{0};
  std::atomic<std::uint64_t> refill_{0};
  std::atomic<std::uint64_t> end_{kNever};
  std::atomic<unsigned> latency_{0};
  std::atomic<std::uint64_t> audible_{0};
  std::atomic<long long> underrunFrames_{0};
  mutable std::atomic<std::size_t> waitedFrames_{0};

  // The device's thread only.
  bool open_ = false;
  bool closing_ = false;  // open, and closed when the fade has ended
  Fade fade_;
  DroppedTail tail_;
  std::vector<float> taken_;        // for it
  std::uint32_t obeyed_ = 0;        // number of the last command
  std::uint64_t silentFrames_ = 0;  // since the last frame out of the ring
};

}  // namespace tesk_audio
