#include "reference_suite/audio/decode/segment_decoding.h"

#include <exception>
#include <utility>

#include "reference_suite/audio/decode/decoding_places.h"
#include "reference_suite/audio/decode/intake.h"

namespace tesk_audio {

SegmentDecoding::SegmentDecoding(const DecodedFormat& format, const DecodeRequest& request, Range range)
    : format_(format), request_(request), range_(range), thread_([this] { Run_(); }, *request.places) {}

SegmentDecoding::~SegmentDecoding() {
  giveUp_ = true;
  thread_.Join();
}

bool SegmentDecoding::Await() {
  thread_.Join();
  return isRegular_;
}

void SegmentDecoding::Run_() noexcept {
  try {
    isRegular_ = Decode_();
  } catch (const std::exception&) {
    // The decoding from the start meets the same, and reports it.
  }
  if (!isRegular_) frames_.reset();
}

bool SegmentDecoding::Decode_() {
  const std::unique_ptr<OpenedAudio> opened = request_.openAgain();
  AudioDecoder& decoder = *opened->decoder;
  const DecodedFormat& format = decoder.Format();
  const bool same = format.channels == format_.channels && format.rateHz == format_.rateHz &&
                    format.frames == format_.frames;
  if (!same || !decoder.BeginAt(range_.from)) return false;
  Intake intake(format, request_);
  const long long frames = range_.to - range_.from;
  if (!intake.TakeUntil(decoder, frames, &giveUp_)) return false;
  notFinite_ = intake.NotFinite();
  if (range_.with > 0) {
    if (!intake.TakeUntil(decoder, frames + range_.with, &giveUp_)) return false;
  } else if (intake.Taken() != frames || intake.TakeUntil(decoder, frames + 1)) {
    return false;  // there is more than the file says
  }
  frames_ = intake.Release();
  return decoder.CanBeShared();
}

}  // namespace tesk_audio
