#include "reference_suite/audio/decode/decode_segments.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "reference_suite/audio/decode/decoding_places.h"
#include "reference_suite/audio/decode/segment_decoding.h"

namespace tesk_audio {

namespace {

// How much neighbours both decode: several of the longest blocks of every format.
constexpr long long kOverlapFrames = 16384;
constexpr long long kToTheEnd = std::numeric_limits<long long>::max();

using Segments = std::vector<std::unique_ptr<SegmentDecoding>>;

// Where segments begin, the first one left out, and behind them the end of the file. They begin where a block
// of the store does.
std::vector<long long> Borders(const DecodedFormat& format, int count, long long block) {
  std::vector<long long> borders;
  long long last = 0;
  for (int index = 1; index < count; ++index) {
    const long long even = format.frames / count * index;
    const long long border = (even + block / 2) / block * block;
    if (border - last <= kOverlapFrames || format.frames - border <= kOverlapFrames) continue;
    borders.push_back(border);
    last = border;
  }
  borders.push_back(format.frames);
  return borders;
}

int SegmentCount(const AudioDecoder& decoder, const Intake& intake, const DecodeRequest& request) {
  const DecodedFormat& format = decoder.Format();
  if (request.places == nullptr) return 1;
  if (!request.openAgain || intake.Resamples() || !IsLong(format, request) || !decoder.CanBeShared())
    return 1;
  const auto most = static_cast<long long>(static_cast<double>(format.frames) /
                                           (request.shortestSegmentSeconds * std::max(1.0, format.rateHz)));
  return static_cast<int>(std::min<long long>(most, request.places->Claim()));
}

// Starts all, or none: where there is no thread left, one decoder is enough.
Segments StartSegments(const std::vector<long long>& borders, const DecodedFormat& format,
                       const DecodeRequest& request) {
  Segments segments;
  for (std::size_t index = 0; index + 1 < borders.size(); ++index) {
    const bool isLast = index + 2 == borders.size();
    const SegmentDecoding::Range range{borders[index], borders[index + 1], isLast ? 0 : kOverlapFrames};
    segments.push_back(std::make_unique<SegmentDecoding>(format, request, range));
    if (!segments.back()->Start()) return {};
  }
  return segments;
}

// Whether the end of one stretch, from its frame `at` on, has the bits of the beginning of the next.
bool Agree(const FrameStore& one, long long at, const FrameStore& next) {
  const std::size_t samples = static_cast<std::size_t>(kOverlapFrames) * one.ChannelCount();
  std::vector<float> ends(samples);
  std::vector<float> begins(samples);
  one.Read(at, kOverlapFrames, ends.data());
  next.Read(0, kOverlapFrames, begins.data());
  return std::memcmp(ends.data(), begins.data(), samples * sizeof(float)) == 0;
}

bool AllAgree(Intake& first, const Segments& segments) {
  FrameStore* before = &first.Store();
  long long from = 0;
  for (const auto& segment : segments) {
    if (!segment->Await()) return false;
    if (!Agree(*before, segment->GetRange().from - from, segment->Frames())) return false;
    before = &segment->Frames();
    from = segment->GetRange().from;
  }
  return true;
}

// Puts everything together in `first`. False when something was odd; `first` is as it was then.
bool Join(AudioDecoder& decoder, Intake& first, std::size_t notFinite, const Segments& segments) {
  if (!decoder.CanBeShared() || !AllAgree(first, segments)) return false;
  const long long decodedHere = first.Taken();
  long long end = segments.front()->GetRange().from;
  for (const auto& segment : segments) {
    notFinite += segment->NotFinite();
    first.GoOnWith(end, std::move(segment->Frames()), notFinite);
    end = segment->GetRange().to;
  }
  decoder.CountAsDelivered(first.Taken() - decodedHere);
  return true;
}

// False when `decoder` has to go on.
bool DecodeInSegments(AudioDecoder& decoder, Intake& intake, const DecodeRequest& request, int count) {
  const auto block = static_cast<long long>(intake.Store().BlockFrames());
  const std::vector<long long> borders = Borders(decoder.Format(), count, block);
  request.places->Keep(static_cast<int>(borders.size()));
  const Segments segments = StartSegments(borders, decoder.Format(), request);
  if (segments.empty()) return false;
  // A file that ends here already is shorter than it said, and has been decoded from first to last.
  if (!intake.TakeUntil(decoder, borders.front())) return true;
  const std::size_t notFinite = intake.NotFinite();
  if (!intake.TakeUntil(decoder, borders.front() + kOverlapFrames)) return true;
  return Join(decoder, intake, notFinite, segments);
}

}  // namespace

bool IsLong(const DecodedFormat& format, const DecodeRequest& request) {
  return static_cast<double>(format.frames) >= 2.0 * request.shortestSegmentSeconds * format.rateHz;
}

void DecodeAll(AudioDecoder& decoder, Intake& intake, const DecodeRequest& request) {
  const int count = SegmentCount(decoder, intake, request);
  if (count > 1 && DecodeInSegments(decoder, intake, request, count)) return;
  if (request.places != nullptr) request.places->Keep(1);
  intake.TakeUntil(decoder, kToTheEnd);
}

}  // namespace tesk_audio
