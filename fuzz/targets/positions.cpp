#include "suite/midi/positions.h"

#include "fuzz/targets/targets.h"
#include "reference_suite/midi/timeline/timeline_builder.h"

namespace fuzz {
namespace {

// The song comes first: its division, its first bar, and three meters with their places.
constexpr std::size_t kSongBytes = 16;

tesk_midi::StandardMidiFile Song(Bytes head) {
  tesk_midi::StandardMidiFile midi;
  midi.division = 1U + head[0] * 4U;
  std::uint32_t tick = 0;
  for (std::size_t meter = 0; meter < 3; ++meter) {
    const auto of = head.subspan(2 + meter * 4, 4);
    midi.meters.push_back({tick, 1U + of[0], 1U << (of[1] % 7U)});
    tick += 1U + of[2] % 16U * 256U + of[3];
  }
  midi.endTick = tick + head[14] % 16U * 256U + head[15];
  return midi;
}

void RequireTheSameTick(const tesk_midi::SongData& song, unsigned tick) {
  const std::string text = tesk_midi::PositionToString(song, tick);
  Require(tesk_midi::ParsePosition(song, text) == tick,
          "a position that is written is read as the same tick");
}

}  // namespace

void Positions(Bytes input) {
  if (input.size() < kSongBytes) return;
  try {
    tesk_midi::BuiltTimeline built = tesk_midi::BuildTimeline(Song(input), input[1]);
    const unsigned end = built.timeline.GetMidiEndTicks();
    const tesk_midi::SongData song("1", "Song", built.pulsesPerQuarterNote, std::move(built.timeline));
    RequireTheSameTick(song, end);
    RequireTheSameTick(song, end / 2);
    const unsigned tick = tesk_midi::ParsePosition(song, Text(input.subspan(kSongBytes)));
    Require(tick <= end, "a position lies in the song");
    RequireTheSameTick(song, tick);
  } catch (const tesk_midi::PositionError& error) {
    Require(*error.what() != '\0', "a refusal has words");
  } catch (const tesk_midi::TimelineError& error) {
    Require(*error.what() != '\0', "a refusal has words");
  }
}

}  // namespace fuzz
