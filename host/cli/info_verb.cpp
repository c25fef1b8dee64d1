#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>

#include "host/cli/json_text.h"
#include "host/cli/not_empty.h"
#include "host/cli/table.h"
#include "host/cli/verbs.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/results.h"
#include "host/session/show_summary.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

using Json = nlohmann::ordered_json;

struct Options {
  std::string show;
  std::string song;
  bool json = false;
};

Json ToJson(const CueSummary& cue) {
  Json json = {{"kind", cue.kind}, {"at", cli::ToJson(cue.at)}};
  if (cue.to) json["to"] = cli::ToJson(*cue.to);
  if (!cue.detail.empty()) json["detail"] = cue.detail;
  if (cue.line > 0) json["line"] = cue.line;
  return json;
}

Json ToJson(const AudioSummary& audio) {
  Json json = {{"file", audio.file}};
  if (!audio.problem.empty()) {
    json["problem"] = audio.problem;
    return json;
  }
  json["format"] = audio.format;
  json["sampleRate"] = audio.sampleRateHz;
  json["channels"] = audio.channels;
  if (audio.frames >= 0) json["frames"] = audio.frames;
  return json;
}

Json ToJson(const SongSummary& song) {
  if (!song.problem.empty()) return {{"number", song.number}, {"name", song.name}, {"problem", song.problem}};
  Json json = {{"number", song.number},
               {"name", song.name},
               {"attacca", song.attacca},
               {"skip", song.skip},
               {"ticksPerQuarter", song.ticksPerQuarter},
               {"start", cli::ToJson(song.start)},
               {"end", cli::ToJson(song.end)}};
  json["audio"] = song.audio ? ToJson(*song.audio) : Json(nullptr);
  json["tempos"] = Json::array();
  for (const TempoSummary& tempo : song.tempos) {
    json["tempos"].push_back({{"at", cli::ToJson(tempo.at)}, {"quartersPerMinute", tempo.quartersPerMinute}});
  }
  json["meters"] = Json::array();
  for (const MeterSummary& meter : song.meters) {
    json["meters"].push_back({{"at", cli::ToJson(meter.at)}, {"beats", meter.beats}, {"unit", meter.unit}});
  }
  json["cues"] = Json::array();
  for (const CueSummary& cue : song.cues) json["cues"].push_back(ToJson(cue));
  return json;
}

std::vector<std::string> Row(const std::string& kind, const Place& at) {
  return {kind,
          at.position,
          "tick",
          std::to_string(at.tick),
          "sample",
          std::to_string(at.sample),
          MinutesAndSeconds(at.seconds)};
}

std::string AudioText(const SongSummary& song) {
  if (!song.audio) return "no audio: this song is passed over";
  const std::string file = Shown(song.audio->file);
  if (!song.audio->problem.empty()) return "cannot be read: " + Shown(song.audio->problem);
  std::string text = file + ": " + song.audio->format + ", " + ShortNumber(song.audio->sampleRateHz) +
                     " Hz, " + Channels(song.audio->channels);
  if (song.audio->frames >= 0) text += ", " + std::to_string(song.audio->frames) + " frames";
  return text;
}

void PrintSong(const SongSummary& song) {
  if (!song.problem.empty()) {
    Results() << '\n'
              << Shown(song.number) << "  " << Shown(song.name)
              << "\n    cannot be read: " << Shown(song.problem) << '\n';
    return;
  }
  Results() << '\n'
            << Shown(song.number) << "  " << Shown(song.name) << "  " << MinutesAndSeconds(song.end.seconds);
  if (song.attacca) Results() << "  attacca";
  if (song.skip) Results() << "  skip";
  Results() << "\n    " << AudioText(song) << '\n';
  Table table({3, 5, 6});
  table.Add(Row("start", song.start));
  for (const TempoSummary& tempo : song.tempos) {
    auto row = Row("tempo", tempo.at);
    row.push_back(ShortNumber(std::round(tempo.quartersPerMinute * 1000.0) / 1000.0) + " quarters a minute");
    table.Add(std::move(row));
  }
  for (const MeterSummary& meter : song.meters) {
    auto row = Row("meter", meter.at);
    row.push_back(std::to_string(meter.beats) + "/" + std::to_string(meter.unit));
    table.Add(std::move(row));
  }
  for (const CueSummary& cue : song.cues) {
    auto row = Row("cue", cue.at);
    row.push_back(cue.kind + (cue.to ? " to " + cue.to->position : "") + (cue.detail.empty() ? "" : ": ") +
                  Shown(cue.detail));
    table.Add(std::move(row));
  }
  table.Add(Row("end", song.end));
  Results() << table.ToText("    ");
}

int Tell(const ShowSummary& show) {
  for (const std::string& problem : show.problems) Say("orbel: " + Shown(problem));
  return show.problems.empty() ? kDone : kFailed;
}

ShowSummary Read(const Options& options) {
  const EndedByInterrupts ended(Shown(options.show) + " was not read", EndedByInterrupts::HangUp::Ends);
  return Summarise(options.show, options.song);
}

int Run(const Options& options) {
  const ShowSummary show = Read(options);
  if (options.json) {
    Json json = {{"title", show.title}, {"songs", Json::array()}};
    for (const SongSummary& song : show.songs) json["songs"].push_back(ToJson(song));
    Print(json);
    return Tell(show);
  }
  Results() << (show.title.empty() ? Shown(options.show) : Shown(show.title)) << '\n';
  for (const SongSummary& song : show.songs) PrintSong(song);
  return Tell(show);
}

}  // namespace

void AddInfo(CLI::App& app, Action* action) {
  CLI::App* verb = app.add_subcommand("info", "Songs in running order, lengths, tempos, meters, cues");
  const auto options = std::make_shared<Options>();
  verb->add_option("SHOW", options->show, "The show folder")->required()->check(GivesAShow());
  verb->add_option("-n,--song", options->song, "Only the song with this number")->check(GivesASong());
  verb->add_flag("--json", options->json, "Print JSON");
  verb->callback([=] { *action = [=] { return Run(*options); }; });
}

}  // namespace orbel::host::cli
