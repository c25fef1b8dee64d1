#include "host/session/song_clock.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "host/session/failure.h"
#include "host/session/shown_text.h"
#include "suite/midi/positions.h"
#include "suite/midi/song_data.h"

namespace orbel::host {
namespace {

template <typename Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// "M:SS.mmm" or plain seconds.
std::optional<double> Seconds(std::string_view text) {
  double minutes = 0.0;
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos) {
    const auto whole = WholeNumber<unsigned>(text.substr(0, colon));
    if (!whole) return std::nullopt;
    minutes = *whole;
    text.remove_prefix(colon + 1);
  }
  const auto seconds = WholeNumber<double>(text);
  const bool fits = seconds && std::isfinite(*seconds) && *seconds >= 0.0 &&
                    (colon == std::string_view::npos || *seconds < 60.0);
  if (!fits) return std::nullopt;
  return minutes * 60.0 + *seconds;
}

[[noreturn]] void Refuse(const std::string& text, const std::string& why) {
  throw Failure("\"" + Shown(text) + "\": " + why);
}

}  // namespace

SongClock::SongClock(const tesk_midi::SongData& song, double sampleRateHz)
    : song_(song), sampleRateHz_(sampleRateHz), converter_(std::make_unique<SamplesTicksConverter>()) {
  converter_->SetData(song, GetStartTick());
  converter_->SetSampleRate(static_cast<long double>(sampleRateHz));
}

SongClock::~SongClock() = default;

SampleCount SongClock::TickToSample(TickIndex tick) const {
  return converter_->TicksToSamples(tick);
}

TickIndex SongClock::SampleToTick(SampleCount sample) const {
  return converter_->SamplesToTicksInteger(sample, nullptr);
}

double SongClock::SampleToSeconds(SampleCount sample) const {
  return static_cast<double>(sample) / sampleRateHz_;
}

Place SongClock::PlaceOfTick(TickIndex tick) const {
  const SampleCount sample = TickToSample(tick);
  return {tesk_midi::PositionToString(song_, tick), tick, sample, SampleToSeconds(sample)};
}

Place SongClock::PlaceOfSample(SampleCount sample) const {
  const TickIndex tick = SampleToTick(sample);
  return {tesk_midi::PositionToString(song_, tick), tick, sample, SampleToSeconds(sample)};
}

Place SongClock::Find(const std::string& text) const {
  const std::string_view view = text;
  if (view.starts_with("sample:")) {
    const auto sample = WholeNumber<SampleCount>(view.substr(7));
    if (!sample || *sample < 0)
      Refuse(text, "after \"sample:\" comes a number of frames, for instance sample:44100");
    return InsideSong_(*sample, text);
  }
  if (view.starts_with("time:")) {
    const auto seconds = Seconds(view.substr(5));
    if (!seconds) Refuse(text, "after \"time:\" come minutes and seconds, for instance time:1:07.250");
    const double samples = *seconds * sampleRateHz_;
    if (samples > 9e15) Refuse(text, "lies after the end of the song");
    return InsideSong_(std::llround(samples), text);
  }
  try {
    return PlaceOfTick(tesk_midi::ParsePosition(song_, text));
  } catch (const tesk_midi::PositionError& error) {
    Refuse(text, Shown(error.what()));
  }
}

Place SongClock::InsideSong_(SampleCount sample, const std::string& text) const {
  const TickIndex last = song_.GetTimeline().GetMidiEndTicks();
  if (sample > TickToSample(last)) {
    Refuse(text, "lies after the end of the song, which is " + PlaceOfTick(last).position + ", sample " +
                     std::to_string(TickToSample(last)) + ", " + MinutesAndSeconds(TickToSeconds(last)));
  }
  return PlaceOfSample(sample);
}

TickIndex SongClock::GetEndTick() const {
  const TickIndex audioEnd = song_.GetTimeline().GetAudioEndTicks();
  return audioEnd == 0 ? song_.GetTimeline().GetMidiEndTicks() : audioEnd;
}

TickIndex SongClock::GetStartTick() const {
  return song_.GetTimeline().GetAudioStartTicks();
}

}  // namespace orbel::host
