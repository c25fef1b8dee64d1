#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/cli/between.h"
#include "host/cli/json_text.h"
#include "host/cli/not_empty.h"
#include "host/cli/play_options.h"
#include "host/cli/verbs.h"

namespace orbel::host::cli {
namespace {

nlohmann::ordered_json ToJson(const PlayReport& report) {
  const Meters& meters = report.meters;
  return {{"song", report.status.song},
          {"position", report.status.position},
          {"tempo", report.status.tempo},
          {"tempoScale", report.status.tempoScale},
          {"transposition", report.status.transposition},
          {"state", report.status.state},
          {"device", meters.device},
          {"recovering", meters.recovering},
          {"unheard", meters.unheard},
          {"deviceLosses", report.deviceLosses},
          {"peaks", meters.peaks},
          {"ringMs", meters.ringMs},
          {"latencyMs", meters.latencyMs},
          {"renderLoad",
           {{"median", meters.loadMedian}, {"p999", meters.load999}, {"longest", meters.loadLongest}}},
          {"underrunFrames", meters.underrunFrames},
          {"xruns", meters.xruns}};
}

int Run(const Faces& faces, const PlayOptions& options, bool asJson) {
  PlayReport report;
  const int status = faces.play(options, &report);
  if (asJson) Print(ToJson(report));
  return status;
}

}  // namespace

void AddPlay(CLI::App& app, const Faces& faces, Action* action) {
  CLI::App* verb = app.add_subcommand("play", "Play to a device");
  const auto options = std::make_shared<PlayOptions>();
  const auto asJson = std::make_shared<bool>(false);
  verb->add_option("SHOW", options->showPath, "The show folder")->required()->check(GivesAShow());
  verb->add_option("-n,--song", options->song, "The song to start with; default: the first")
      ->check(GivesASong());
  AddSoundOptions(*verb, *options);
  verb->add_option("--script", options->scriptPath, "Rehearsed commands, one a line, as for render")
      ->check(NotEmpty("name", "the script"));
  verb->add_option("--vamp-passes", options->vampPasses,
                   "Without a terminal: how often a vamp is played in all")
      ->check(WholeBetween(1, 1'000'000))
      ->capture_default_str();
  verb->add_option("--caesura-silence", options->caesuraSilence,
                   "Without a terminal: seconds of wait at a caesura")
      ->check(Between(0.0, 3600.0))
      ->capture_default_str();
  verb->add_flag("-v,--verbose", options->verbose, "Also show what the JACK library itself says");
  verb->add_flag("--json", *asJson, "At the end print how it went as JSON");
  verb->footer(
      std::string(
          "Keys: space go; p play or pause; s stop; a once more (safety); n, b next and previous song;\n"
          "left, right to the place before and after; up, down a hundredth faster or slower; +, - a\n"
          "semitone higher or lower; 0 tempo and key as written; q or Ctrl-C quit, twice while a song is\n"
          "under way. Without a terminal nobody can press a key: vamps are left and caesuras waited out by\n"
          "themselves, and song follows song to the end of the show.\n"
          "A song that is still loading is named and waited for; keys pressed meanwhile are obeyed "
          "then.\n"
          "The sound: underruns, silence heard because nothing was rendered in time; xruns, as the device\n"
          "counts them; peak of each channel; ring, rendered ahead by now; latency, until it is heard; "
          "load,\n"
          "of the time to render in: median, 99.9th percentile, longest.\n\n") +
      kExitStatuses);
  verb->callback([=] { *action = [=] { return Run(faces, *options, *asJson); }; });
}

}  // namespace orbel::host::cli
