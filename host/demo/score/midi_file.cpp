#include "host/demo/score/midi_file.h"

#include "reference_suite/midi/standard_midi_file/smf_writer.h"

namespace orbel::host::demo {

std::vector<std::uint8_t> MidiFileOf(const Score& score) {
  tesk_midi::SmfWriter writer(score.Division(), score.Title());
  for (const TempoChange& tempo : score.Tempos()) writer.Tempo(tempo.tick, tempo.microsecondsPerQuarter);
  for (const MeterChange& meter : score.Meters()) {
    writer.Meter(meter.tick, meter.numerator, meter.denominator);
  }
  for (const KeyChange& key : score.Keys()) writer.Key(key.tick, key.sharps, key.minor);
  for (const Marker& marker : score.Markers()) writer.Marker(marker.tick, marker.text);
  for (const Part& part : score.Parts()) {
    const std::size_t track = writer.AddPart(part.name);
    writer.Program(track, 0, part.channel, part.program);
    for (const Note& note : part.notes) {
      writer.Note(track, note.tick, note.length, part.channel, static_cast<unsigned>(note.key),
                  static_cast<unsigned>(note.velocity));
    }
  }
  writer.End(score.End());
  return writer.Bytes();
}

}  // namespace orbel::host::demo
