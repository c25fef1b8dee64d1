#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "host/cli/verbs.h"
#include "host/session/failure.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {

void AddDemo(CLI::App& app, const Faces& faces, Action* action) {
  CLI::App* verb = app.add_subcommand("demo", "Write a small complete show that uses every feature");
  const auto folder = std::make_shared<std::string>();
  verb->add_option("DIR", *folder, "The folder to write; it must not exist yet, or be empty")->required();
  verb->callback([=] {
    *action = [=] {
      faces.writeDemo(*folder);
      std::cout << Shown(*folder) << '\n';
      Say("A show was written. Play it with: orbel play " + Shown(*folder));
      return kDone;
    };
  });
}

}  // namespace orbel::host::cli
