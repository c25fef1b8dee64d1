#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "suite/midi/change_log.h"
#include "suite/midi/show_data.h"

namespace tesk_midi {

// One thing that is wrong with a show, or worth a warning: where it is, what it is, what to do about it.
// File names in it are as people may see them: control characters and bytes that are not UTF-8 stand as \xNN.
struct Problem {
  std::string file;  // relative to the show folder; empty: the show as a whole
  int line = 0;      // from 1; 0: not in a line of text
  int column = 0;
  std::string songNumber;  // empty: not one song's
  std::string message;     // what was found and what to do about it, one sentence or two
  bool isWarning = false;
};

// "songs/3 Waltz.toml:12:8: MESSAGE"; parts that are not known are left out.
std::string ToString(const Problem& problem);

// The show cannot be loaded. what() is ToString of the first problem.
class ShowError : public std::runtime_error {
 public:
  explicit ShowError(std::vector<Problem> problems);
  const std::vector<Problem>& GetProblems() const { return problems_; }

 private:
  std::vector<Problem> problems_;
};

struct LoadedShow {
  std::unique_ptr<ShowData> showData;
  std::unique_ptr<CL::ChangeLog> changeLog;
  // Warnings, and one error for each song that is left out because a file of its own cannot be read.
  std::vector<Problem> warnings;
};

// Reads show.toml and songs/ of a show folder. Touches no audio. What is wrong with a file's content is
// thrown as ShowError, with every problem found and not only the first. A song whose file the system does not
// let be read (permission, a pipe, a link that leads nowhere) is left out instead, so that the rest of the
// show plays; when no song remains, that is thrown too. Threads: ANY; waits for the disk.
LoadedShow LoadShow(const std::string& showPath);

// Equal for song numbers that differ in leading zeros only, which no show may have: "1" for "001", "2a" for
// "02a". Threads: ANY.
std::string NumberByValue(const std::string& number);

}  // namespace tesk_midi
