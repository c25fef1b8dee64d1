#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "reference_suite/audio/decode/decode_content.h"
#include "reference_suite/audio/decode/decoding_thread.h"
#include "reference_suite/audio/decode/frame_store.h"

namespace tesk_audio {

// A stretch of a file, decoded by a decoder of its own on a thread of its own, and what came of it.
//
// Units      frames of the file's own rate, from its first one.
// Threads    one owner; the thread is this object's.
class SegmentDecoding {
 public:
  struct Range {
    long long from = 0;
    long long to = 0;    // where the next segment begins
    long long with = 0;  // how many frames behind `to` are decoded as well, to compare; 0 in the last segment
  };

  // `format` and `request`, which has places, must outlive the segment.
  SegmentDecoding(const DecodedFormat& format, const DecodeRequest& request, Range range);
  // Gives up, waits.
  ~SegmentDecoding();
  SegmentDecoding(const SegmentDecoding&) = delete;
  SegmentDecoding& operator=(const SegmentDecoding&) = delete;

  // False when there is no thread to be had.
  bool Start() { return thread_.Start(); }
  // Waits for the end. True when everything came out, and as regularly as it should.
  bool Await();
  // After Await has returned true: the frames from Range::from to Range::to and `with` more.
  FrameStore& Frames() { return *frames_; }
  // Of the samples from Range::from to Range::to.
  std::size_t NotFinite() const { return notFinite_; }
  const Range& GetRange() const { return range_; }

 private:
  void Run_() noexcept;
  bool Decode_();

  const DecodedFormat& format_;
  const DecodeRequest& request_;
  const Range range_;
  std::atomic<bool> giveUp_{false};
  bool isRegular_ = false;
  std::unique_ptr<FrameStore> frames_;
  std::size_t notFinite_ = 0;
  DecodingThread thread_;  // last: it ends before anything else goes
};

}  // namespace tesk_audio
