#include "host/session/check_show.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <typeinfo>
#include <utility>

#include "host/session/console_lines.h"
#include "host/session/failure.h"
#include "host/session/odd_names.h"
#include "host/session/short_ticks.h"
#include "host/session/show_folder.h"
#include "host/session/shown_text.h"
#include "host/session/song_check.h"
#include "host/session/stray_audio.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/errors.h"
#include "suite/utility/path.h"

namespace orbel::host {
namespace {

using Problems = std::vector<tesk_midi::Problem>;

void Add(Problems* out, const std::string& file, const std::string& song, const std::string& message,
         bool isWarning) {
  tesk_midi::Problem problem;
  problem.file = file;
  problem.songNumber = song;
  problem.message = message;
  problem.isWarning = isWarning;
  out->push_back(std::move(problem));
}

// Files in "data" that are not played, and songs and files that do not find each other.
void CheckFiles(const ShowFolder& show, Problems* out) {
  std::vector<std::string> duplicates;
  FindAudioFiles(show.GetDataNames(), &duplicates);
  for (std::size_t index = 0; index + 1 < duplicates.size(); index += 2) {
    Add(out, duplicates[index], "",
        "has the same number as \"" + duplicates[index + 1] +
            "\", which is played instead; remove one of the two",
        false);
  }
  const Problems stray = FindStrayAudio(show);
  out->insert(out->end(), stray.begin(), stray.end());
  const Problems odd = FindOddNames(show);
  out->insert(out->end(), odd.begin(), odd.end());
  for (const std::string& number : show.GetData().GetRunningOrder()) {
    if (show.HasAudio(number) || !show.GetDataFault().empty()) continue;
    const std::string name = number + " " + show.GetData().GetSong(number).GetName();
    Add(out, show.MidiFile(number), number, "has no audio and is passed over; add \"data/" + name + ".obd\"",
        true);
  }
  if (!show.GetDataFault().empty()) return Add(out, "data", "", show.GetDataFault(), false);
  for (const std::string& name : show.GetDataNames()) {
    if (exc::path::extension(name) == ".obd") continue;
    Add(out, "data/" + name, "",
        "is not played, because its name does not end in \".obd\"; rename it, or take it out", true);
  }
  if (show.GetAudioFiles().empty())
    Add(out, "data", "", "no song has audio, so nothing can be played", false);
}

struct Format {
  std::string song;
  double rateHz = 0.0;
  unsigned channels = 0;
};

// Decodes one song and holds it against the first song that could be decoded.
void CheckAudio(const ShowFolder& show, const std::string& song, std::optional<Format>* first,
                Problems* out) {
  const std::string file = "data/" + show.GetAudioFiles().at(song);
  std::unique_ptr<tesk_audio::AudioSampleContent> content;
  HeldConsoleLines console;
  try {
    content.reset(tesk_audio::CreateAudioSampleContent(show.AudioPath(song), ""));
  } catch (const std::exception& error) {
    const std::string why = WithoutFullStop(WithoutPath(error.what(), file));
    // What the system refused, memory for instance, says nothing about the file.
    const bool isTheFile = typeid(error) != typeid(tesk_audio::TESKAudioError);
    Add(out, file, song, why + ". The song is left out" + (isTheFile ? "; replace the file" : ""), false);
    return;
  }
  for (const std::string& line : console.Take()) Add(out, file, song, WithoutPath(line, file), true);
  if (!*first) *first = Format{song, content->GetSampleRateHz(), content->GetChannelCount()};
  if (content->GetSampleRateHz() != (*first)->rateHz) {
    Add(out, file, song,
        "has " + ShortNumber(content->GetSampleRateHz()) + " frames a second where song " + (*first)->song +
            " has " + ShortNumber((*first)->rateHz) +
            ", so it is resampled when it is loaded; convert it to save that",
        true);
  }
  if (content->GetChannelCount() != (*first)->channels) {
    Add(out, file, song,
        "has " + Channels(content->GetChannelCount()) + " where song " + (*first)->song + " has " +
            std::to_string((*first)->channels) + ", so it cannot be played in this show; convert it",
        false);
  }
  // At the rate at which it is played beside the others, and at its own, when it is the one asked for.
  auto tooShort = FindShortTick(show, song, (*first)->rateHz);
  if (!tooShort) tooShort = FindShortTick(show, song, content->GetSampleRateHz());
  if (tooShort) {
    tooShort->message += ". The song is left out";
    out->push_back(std::move(*tooShort));
    return;
  }
  Problems more = CheckSongAudio(show, song, *content);
  out->insert(out->end(), more.begin(), more.end());
}

Problems CheckLoaded(const ShowFolder& show, const std::function<void(const std::string&)>& progress) {
  Problems problems = show.GetWarnings();
  CheckFiles(show, &problems);
  std::optional<Format> first;
  for (const std::string& number : show.GetData().GetRunningOrder()) {
    Problems cues = CheckSongCues(show, number);
    problems.insert(problems.end(), cues.begin(), cues.end());
    if (!show.HasAudio(number) || show.GetData().IsLeftOut(number)) continue;
    if (progress) progress(show.ShownAudioPath(number));
    CheckAudio(show, number, &first, &problems);
  }
  return problems;
}

}  // namespace

Problems CheckShow(const std::string& showPath,
                   const std::function<void(const std::string& file)>& progress) {
  Problems problems;
  try {
    problems = CheckLoaded(ShowFolder(showPath), progress);
  } catch (const tesk_midi::ShowError& error) {
    problems = error.GetProblems();
  }
  std::stable_partition(problems.begin(), problems.end(),
                        [](const auto& problem) { return !problem.isWarning; });
  return problems;
}

}  // namespace orbel::host
