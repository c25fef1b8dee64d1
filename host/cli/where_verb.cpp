#include <CLI/CLI.hpp>
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

struct Options {
  std::string show;
  std::string song;
  std::vector<std::string> positions;
  bool json = false;
};

std::vector<Place> Find(const Options& options) {
  const EndedByInterrupts ended(Shown(options.show) + " was not read", EndedByInterrupts::HangUp::Ends);
  return FindPlaces(options.show, options.song, options.positions);
}

int Run(const Options& options) {
  const std::vector<Place> places = Find(options);
  if (options.json) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const Place& place : places) json.push_back(ToJson(place));
    Print(json);
    return kDone;
  }
  Table table({2, 4, 5});
  for (const Place& place : places) {
    table.Add({place.position, "tick", std::to_string(place.tick), "sample", std::to_string(place.sample),
               MinutesAndSeconds(place.seconds)});
  }
  Results() << table.ToText("");
  return kDone;
}

}  // namespace

void AddWhere(CLI::App& app, Action* action) {
  CLI::App* verb = app.add_subcommand("where", "Positions of a song in every unit");
  const auto options = std::make_shared<Options>();
  verb->add_option("SHOW", options->show, "The show folder")->required()->check(GivesAShow());
  verb->add_option("SONG", options->song, "The song's number")->required()->check(GivesASong());
  verb->add_option("POSITION", options->positions,
                   "bar.beat.tick, \"end\", tick:N, sample:N or time:M:SS.mmm; several are allowed")
      ->required();
  verb->add_flag("--json", options->json, "Print a JSON array with one object a position");
  verb->callback([=] { *action = [=] { return Run(*options); }; });
}

}  // namespace orbel::host::cli
