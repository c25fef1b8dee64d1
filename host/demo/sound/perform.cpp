#include "host/demo/sound/perform.h"

#include "host/demo/score/tempo_map.h"
#include "host/demo/sound/master.h"
#include "host/demo/sound/mixer.h"
#include "host/demo/sound/voice.h"

namespace orbel::host::demo {

namespace {

constexpr double kRoomSeconds = 1.1;

}  // namespace

StereoSound Perform(const Score& score, Tick start, Tick end) {
  const TempoMap map(score, start, kSampleRate);
  Mixer mixer(static_cast<std::size_t>(map.FrameAt(end)));
  std::uint32_t seed = 0;
  for (const Part& part : score.Parts()) {
    const Place place{part.level, part.pan, part.room};
    for (const Note& note : part.notes) {
      ++seed;  // no two notes alike, and every run the same
      if (note.tick < start) continue;
      const std::int64_t first = map.FrameAt(note.tick);
      const std::int64_t last = map.FrameAt(note.tick + note.length);
      const double seconds = static_cast<double>(last - first) / kSampleRate;
      mixer.Add(PlayVoice(part.voice, note.key, seconds, note.velocity, seed),
                static_cast<std::size_t>(first), place);
    }
  }
  StereoSound sound = mixer.Finish(kRoomSeconds);
  Master(sound);
  return sound;
}

}  // namespace orbel::host::demo
