#include <CLI/CLI.hpp>
#include <memory>

#include "host/cli/json_text.h"
#include "host/cli/not_empty.h"
#include "host/cli/verbs.h"
#include "host/session/add_song.h"
#include "host/session/failure.h"
#include "host/session/results.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

struct Options {
  std::string show;
  NewSong song;
  bool json = false;
};

int Run(const Options& options) {
  const std::vector<std::string> files = AddSong(options.show, options.song);
  if (options.json) {
    Print(files);
    return kDone;
  }
  for (const std::string& file : files) Results() << Shown(file) << '\n';
  return kDone;
}

}  // namespace

void AddSongVerb(CLI::App& app, Action* action) {
  CLI::App* verb = app.add_subcommand("add", "Put a song into a show; creates the show when there is none");
  const auto options = std::make_shared<Options>();
  verb->add_option("SHOW", options->show, "The show folder")->required()->check(GivesAShow());
  verb->add_option("NUMBER", options->song.number, "The song's number, for instance 12 or 3a")->required();
  verb->add_option("NAME", options->song.name, "The song's name")->required();
  verb->add_option("--midi", options->song.midiPath, "Its Standard MIDI File")
      ->required()
      ->check(NotEmpty("name", "the MIDI file"));
  verb->add_option("--audio", options->song.audioPath, "Its recording")
      ->required()
      ->check(NotEmpty("name", "the sound file"));
  verb->add_flag("--replace", options->song.replace, "Take the place of a song with this number");
  verb->add_flag("--json", options->json, "Print a JSON array with the files");
  verb->callback([=] { *action = [=] { return Run(*options); }; });
}

}  // namespace orbel::host::cli
