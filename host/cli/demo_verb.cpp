#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "host/cli/verbs.h"
#include "host/session/failure.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {

namespace {

int Run(const Faces& faces, const std::string& folder) {
  const bool shows = MessagesAreOnTerminal();
  faces.writeDemo(folder, [&](const std::string& file) {
    if (shows) std::cerr << "\r\x1b[K" << (file.empty() ? "" : "making " + Shown(file)) << std::flush;
  });
  std::cout << Shown(folder) << '\n';
  Say("A show was written. Play it with: orbel play " + Shown(folder));
  return kDone;
}

}  // namespace

void AddDemo(CLI::App& app, const Faces& faces, Action* action) {
  CLI::App* verb = app.add_subcommand("demo", "Write a small complete show that uses every feature");
  const auto folder = std::make_shared<std::string>();
  verb->add_option("DIR", *folder, "The folder to write: a new one, an empty one, or an earlier demo")
      ->required();
  verb->callback([=] { *action = [=] { return Run(faces, *folder); }; });
}

}  // namespace orbel::host::cli
