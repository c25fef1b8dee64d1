#include "tests/host/demo/loaded_demo.h"

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "host/demo/score/midi_file.h"
#include "host/demo/songs/demo_song.h"
#include "tests/host/demo/scratch_folder.h"

using orbel::host::demo::AllSongs;
using orbel::host::demo::DemoSong;

LoadedDemo::LoadedDemo() {
  const ScratchFolder folder;
  PutFile(folder.Path() / "show.toml", orbel::host::demo::kShowFile);
  for (const DemoSong& song : AllSongs()) {
    const auto bytes = MidiFileOf(song.score);
    const std::string name = "songs/" + song.number + " " + song.name;
    PutFile(folder.Path() / (name + ".mid"), std::string(bytes.begin(), bytes.end()));
    PutFile(folder.Path() / (name + ".toml"), song.cues);
  }
  show_ = tesk_midi::LoadShow(folder.Path().string());
}

unsigned LoadedDemo::AudioStart(const std::string& number) const {
  return Song(number).GetTimeline().GetAudioStartTicks();
}

unsigned LoadedDemo::AudioEnd(const std::string& number) const {
  const TL::Timeline& timeline = Song(number).GetTimeline();
  return timeline.GetAudioEndTicks() == 0 ? timeline.GetMidiEndTicks() : timeline.GetAudioEndTicks();
}

long long LoadedDemo::FrameAt(const std::string& number, unsigned tick) const {
  SamplesTicksConverter converter;
  converter.SetSampleRate(48'000);
  converter.SetData(Song(number), AudioStart(number));
  return converter.TicksToSamples(tick);
}

std::vector<std::pair<unsigned, unsigned>> LoadedDemo::Jumps(const std::string& number) const {
  std::vector<std::pair<unsigned, unsigned>> jumps;
  for (const CL::Loop& loop : Log(number).loops) jumps.emplace_back(loop.GetEndTime(), loop.abs_time());
  for (const CL::Cut& cut : Log(number).cuts) jumps.emplace_back(cut.abs_time(), cut.GetEndTime());
  return jumps;
}
