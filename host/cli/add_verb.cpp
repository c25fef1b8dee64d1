#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "host/cli/verbs.h"
#include "host/session/add_song.h"
#include "host/session/failure.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

struct Options {
  std::string show;
  NewSong song;
};

}  // namespace

void AddSongVerb(CLI::App& app, Action* action) {
  CLI::App* verb = app.add_subcommand("add", "Put a song into a show; creates the show when there is none");
  const auto options = std::make_shared<Options>();
  verb->add_option("SHOW", options->show, "The show folder")->required();
  verb->add_option("NUMBER", options->song.number, "The song's number, for instance 12 or 3a")->required();
  verb->add_option("NAME", options->song.name, "The song's name")->required();
  verb->add_option("--midi", options->song.midiPath, "Its Standard MIDI File")->required();
  verb->add_option("--audio", options->song.audioPath, "Its recording")->required();
  verb->add_flag("--replace", options->song.replace, "Take the place of a song with this number");
  verb->callback([=] {
    *action = [=] {
      for (const std::string& file : AddSong(options->show, options->song)) std::cout << Shown(file) << '\n';
      return kDone;
    };
  });
}

}  // namespace orbel::host::cli
