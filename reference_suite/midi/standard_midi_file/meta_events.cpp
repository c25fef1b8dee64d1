// The meta events that a show uses; all others are stepped over by their length.

#include <string>
#include <utility>

#include "reference_suite/midi/standard_midi_file/smf_limits.h"
#include "reference_suite/midi/standard_midi_file/track_reader.h"

namespace tesk_midi {

namespace {

enum MetaType : std::uint8_t {
  kMarker = 0x06,
  kEndOfTrack = 0x2F,
  kTempo = 0x51,
  kMeter = 0x58,
  kKey = 0x59
};

constexpr unsigned kLargestDenominatorPower = 6;  // a 64th; finer beats would be no whole number of ticks

}  // namespace

void TrackReader::ReadMeta_() {
  const std::uint8_t type = cursor_.U8("the type of a meta event");
  const std::uint32_t length = cursor_.Quantity("the length of a meta event");
  const auto data = cursor_.Take(length, "a meta event");
  switch (type) {
    case kMarker:
      return AddMarker_(data);
    case kEndOfTrack:
      return EndTrack_(data);
    case kTempo:
      return AddTempo_(RequireLength_(data, 3, "a tempo"));
    case kMeter:
      return AddMeter_(RequireLength_(data, 4, "a meter"));
    case kKey:
      return AddKey_(RequireLength_(data, 2, "a key"));
    default:
      return;
  }
}

// Longer events than today's are allowed for by the format; what is added at their end is not known to us.
std::span<const std::uint8_t> TrackReader::RequireLength_(std::span<const std::uint8_t> data,
                                                          std::size_t length, const char* what) {
  if (data.size() == length) return data;
  const std::string found = std::string(what) + " of " + std::to_string(data.size()) + " bytes where " +
                            std::to_string(length) + " belong";
  if (data.size() < length) {
    RefuseSmf(cursor_.Name(), eventOffset_, found, "the file is damaged, export it again");
  }
  progress_.warnings.Add(eventOffset_, found, "the others are ignored");
  return data;
}

void TrackReader::AddTempo_(std::span<const std::uint8_t> data) {
  const std::uint32_t microseconds =
      std::uint32_t{data[0]} << 16 | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]};
  if (microseconds == 0) {
    RefuseSmf(cursor_.Name(), eventOffset_, "a tempo of 0 microseconds per quarter note",
              "correct the tempo at tick " + std::to_string(tick_));
  }
  progress_.file.tempos.push_back({tick_, microseconds});
}

void TrackReader::AddMeter_(std::span<const std::uint8_t> data) {
  const unsigned numerator = data[0];
  const unsigned power = data[1];
  if (numerator == 0 || power > kLargestDenominatorPower) {
    RefuseSmf(cursor_.Name(), eventOffset_,
              "a meter of " + std::to_string(numerator) + " over 2 to the power of " + std::to_string(power),
              "correct the meter at tick " + std::to_string(tick_) + " (1 to 255 over at most 64)");
  }
  progress_.file.meters.push_back({tick_, numerator, 1u << power});
}

// A key is only shown, so a wrong one does not cost the song.
void TrackReader::AddKey_(std::span<const std::uint8_t> data) {
  const int sharps = data[0] < 0x80 ? data[0] : data[0] - 0x100;
  const unsigned mode = data[1];
  if (sharps < -7 || sharps > 7 || mode > 1) {
    progress_.warnings.Add(eventOffset_,
                           "a key of " + std::to_string(sharps) + " sharps in mode " + std::to_string(mode),
                           "it is ignored");
    return;
  }
  progress_.file.keys.push_back({tick_, sharps, mode == 1});
}

void TrackReader::AddMarker_(std::span<const std::uint8_t> data) {
  if (progress_.file.markers.size() == kMaxSmfMarkers) {
    RefuseSmf(cursor_.Name(), eventOffset_, "more than " + std::to_string(kMaxSmfMarkers) + " markers",
              "leave out those that the show does not need");
  }
  SmfMarker marker;
  marker.tick = tick_;
  marker.name.assign(reinterpret_cast<const char*>(data.data()), data.size());
  progress_.file.markers.push_back(std::move(marker));
}

void TrackReader::EndTrack_(std::span<const std::uint8_t> data) {
  if (!data.empty()) {
    progress_.warnings.Add(eventOffset_, "an End Of Track with " + std::to_string(data.size()) + " bytes",
                           "they are ignored");
  }
  ended_ = true;
}

}  // namespace tesk_midi
