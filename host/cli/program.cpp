#include "host/cli/program.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>

#include "host/cli/verbs.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/shown_text.h"
#include "host/session/version.h"

namespace orbel::host::cli {
namespace {

constexpr char kFooter[] =
    "Exit status: 0 done; 1 a failure while running; 2 wrong usage; 3 the performance cannot end (a vamp or "
    "a\n"
    "caesura that nothing leaves); 5 the check found errors.";

void AddVerbs(CLI::App& app, const Faces& faces, Action* action) {
  AddDemo(app, faces, action);
  AddInfo(app, action);
  AddWhere(app, action);
  AddCheck(app, action);
  AddRender(app, action);
  AddPlay(app, faces, action);
  AddSongVerb(app, action);
}

// The words of an error as lines that may be shown: line ends stay, everything else that controls is escaped.
void SayError(const std::string& what) {
  std::size_t begin = 0;
  while (begin <= what.size()) {
    const std::size_t end = std::min(what.find('\n', begin), what.size());
    Say((begin == 0 ? "orbel: " : "       ") + Shown(what.substr(begin, end - begin)));
    begin = end + 1;
  }
}

int Carry(const Action& action) {
  try {
    const int status = action();
    if (std::cout.flush()) return status;
    Say("orbel: the results could not be written to standard output");
    return status == kDone ? kFailed : status;
  } catch (const Failure& failure) {
    SayError(failure.what());
    return failure.GetStatus();
  } catch (const std::bad_alloc&) {
    Say("orbel: out of memory; close other programs, or shorten the recordings");
  } catch (const std::exception& error) {
    SayError(error.what());
  }
  return kFailed;
}

}  // namespace

void Say(const std::string& message) {
  std::cerr << message << std::endl;
}

bool OutputIsTerminal() {
  return ::isatty(STDOUT_FILENO) == 1;
}

bool MessagesAreOnTerminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

int RunProgram(int argc, char** argv, const Faces& faces) {
  CatchInterrupts();
  CLI::App app("Plays the backing tracks of a live show.", "orbel");
  app.set_version_flag("--version", kVersion, "Print the version and end");
  app.require_subcommand(1);
  app.footer(kFooter);
  app.get_formatter()->column_width(34);
  Action action;
  AddVerbs(app, faces, &action);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  return Carry(action);
}

}  // namespace orbel::host::cli
