#include "fuzz/targets/targets.h"
#include "reference_suite/midi/standard_midi_file/smf_reader.h"
#include "reference_suite/midi/timeline/timeline_builder.h"

namespace fuzz {
namespace {

constexpr char kName[] = "song.mid";

template <typename Events>
void RequireAscending(const Events& events, std::uint32_t end) {
  std::uint32_t last = 0;
  for (const auto& event : events) {
    Require(event.tick >= last && event.tick <= end, "events of the file ascend up to its end");
    last = event.tick;
  }
}

template <typename Events>
void RequireStrictlyAscending(const Events& events) {
  Require(events.begin() != events.end() && events.begin()->abs_time() == 0,
          "the first event stands at tick 0");
  for (auto event = events.begin(); event != events.end(); ++event) {
    const auto next = std::next(event);
    Require(next == events.end() || event->abs_time() < next->abs_time(), "one event at a tick, ascending");
  }
}

void CheckTimeline(const tesk_midi::StandardMidiFile& midi) {
  try {
    const tesk_midi::BuiltTimeline built = tesk_midi::BuildTimeline(midi, 1);
    const double ppq = built.pulsesPerQuarterNote;
    Require(ppq >= 480, "at least 480 ticks to a quarter note");
    Require(built.timeline.GetMidiEndTicks() > 0, "a song has a length");
    RequireStrictlyAscending(built.timeline.GetTempos());
    RequireStrictlyAscending(built.timeline.GetMeters());
    RequireStrictlyAscending(built.timeline.GetBarsBeats());
    for (const TL::Tempo& tempo : built.timeline.GetTempos()) {
      Require(tempo.GetMicrosecondsPerQuarter() <= 2500.0 * ppq, "no tick lasts longer than 2.5 ms");
    }
  } catch (const tesk_midi::TimelineError& error) {
    Require(*error.what() != '\0', "a refusal has words");
  }
}

}  // namespace

void Smf(Bytes input) {
  try {
    const tesk_midi::StandardMidiFile midi = tesk_midi::ParseSmf(input, kName);
    Require(midi.division >= 1 && midi.division <= 32'767, "a metrical division");
    Require(midi.format <= 1, "type 0 or 1");
    RequireAscending(midi.tempos, midi.endTick);
    RequireAscending(midi.meters, midi.endTick);
    RequireAscending(midi.keys, midi.endTick);
    RequireAscending(midi.markers, midi.endTick);
    for (const auto& tempo : midi.tempos) Require(tempo.microsecondsPerQuarter != 0, "no tempo is 0");
    for (const std::string& warning : midi.warnings) {
      Require(warning.starts_with(std::string(kName) + ": "), "a warning names the file");
    }
    CheckTimeline(midi);
  } catch (const tesk_midi::SmfError& error) {
    Require(std::string(error.what()).starts_with(std::string(kName) + ": byte "),
            "a refusal names file and byte");
  }
}

}  // namespace fuzz
