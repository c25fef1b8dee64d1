#include "reference_suite/midi/show_folder/load_song.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "reference_suite/midi/show_folder/build_song_log.h"
#include "reference_suite/midi/show_folder/file_problems.h"
#include "reference_suite/midi/show_folder/placed_cue.h"
#include "reference_suite/midi/show_folder/read_file.h"
#include "reference_suite/midi/show_folder/read_song_log.h"
#include "reference_suite/midi/standard_midi_file/smf_limits.h"
#include "reference_suite/midi/standard_midi_file/smf_reader.h"
#include "reference_suite/midi/timeline/timeline_builder.h"
#include "suite/utility/path.h"

namespace tesk_midi {

namespace {

// A bar of silence for a song of which nothing can be read: it is in the show, but nobody plays it.
SongData EmptySong(const SongFiles& files) {
  constexpr unsigned kPpq = 480;
  TL::Timeline timeline;
  timeline.SetTempos(cmn::SequenceTemplate<TL::Tempo>({TL::Tempo(0, 500'000)}));
  timeline.SetMeters(cmn::SequenceTemplate<TL::Meter>({TL::Meter(0, 4, 4)}));
  timeline.SetBarsBeats(cmn::SequenceTemplate<TL::BarsBeats>({TL::BarsBeats(0, 1, 4, kPpq)}));
  timeline.SetMidiEndTicks(4 * kPpq);
  return SongData(files.number, ShownText(files.name), kPpq, std::move(timeline));
}

class SongLoader {
 public:
  SongLoader(const std::string& showPath, const SongFiles& files, SongProblems* problems)
      : files_(files),
        folder_(exc::path::Join(showPath, "songs")),
        midiProblems_("songs/" + files.midi, files.number, &problems->refusing),
        tomlProblems_("songs/" + files.toml, files.number, &problems->refusing),
        problems_(problems) {}

  std::optional<LoadedSong> Load() {
    const auto midiBytes = Read_(files_.midi, kMaxSmfBytes);
    const auto tomlText = files_.toml.empty() ? std::string() : Read_(files_.toml, kMaxTomlBytes);
    if (!midiBytes || !tomlText) return LoadedSong{EmptySong(files_), {}, true};
    const WrittenSongLog written = ReadSongLog(*tomlText, &tomlProblems_);
    auto built = Build_(*midiBytes, written.firstBar);
    if (!built) return std::nullopt;
    PlaceAudio(written, &tomlProblems_, &built->timeline);
    std::vector<PlacedCue> cues = PlaceCues(written, built->timeline, &tomlProblems_);
    CheckConflicts(cues, &tomlProblems_);
    if (tomlProblems_.GetErrorCount() != 0) return std::nullopt;
    CL::SongLog log = BuildSongLog(written, std::move(cues), built->markers, &built->timeline);
    return LoadedSong{SongData(files_.number, ShownText(files_.name), built->pulsesPerQuarterNote,
                               std::move(built->timeline)),
                      std::move(log)};
  }

 private:
  std::optional<std::string> Read_(const std::string& file, std::size_t limit) {
    try {
      return ReadRegularFile(exc::path::Join(folder_, file), limit);
    } catch (const FileError& error) {
      FileProblems problems("songs/" + file, files_.number, &problems_->leavingOut);
      problems.Error(std::string(error.what()) + " The song is left out.");
      return std::nullopt;
    }
  }

  std::optional<BuiltTimeline> Build_(const std::string& bytes, int firstBar) {
    try {
      return BuildWarning_(bytes, firstBar);
    } catch (const SmfError& error) {
      midiProblems_.Error(WithoutFile_(error.what()));
    } catch (const TimelineError& error) {
      midiProblems_.Error(error.what());
    }
    return std::nullopt;
  }

  BuiltTimeline BuildWarning_(const std::string& bytes, int firstBar) {
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    StandardMidiFile midi = ParseSmf(std::span(data, bytes.size()), midiProblems_.GetShownFile());
    for (const std::string& warning : midi.warnings) midiProblems_.Warn(WithoutFile_(warning));
    for (SmfMarker& marker : midi.markers) marker.name = TextFromMidi(marker.name);
    BuiltTimeline built = BuildTimeline(midi, firstBar);
    for (const std::string& warning : built.warnings) midiProblems_.Warn(warning);
    return built;
  }

  // The reader of MIDI files begins its sentences with the file, which a problem names already.
  std::string WithoutFile_(const std::string& text) const {
    return text.substr(midiProblems_.GetShownFile().size() + std::string_view(": ").size());
  }

  const SongFiles& files_;
  const std::string folder_;
  FileProblems midiProblems_;
  FileProblems tomlProblems_;
  SongProblems* problems_;
};

}  // namespace

std::optional<LoadedSong> LoadSong(const std::string& showPath, const SongFiles& files,
                                   SongProblems* problems) {
  return SongLoader(showPath, files, problems).Load();
}

}  // namespace tesk_midi
