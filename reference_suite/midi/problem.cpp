#include <utility>

#include "suite/midi/load_show.h"

namespace tesk_midi {

std::string ToString(const Problem& problem) {
  std::string text = problem.file;
  for (const int number : {problem.line, problem.column}) {
    if (number == 0) break;
    if (!text.empty()) text += ':';
    text += std::to_string(number);
  }
  if (!text.empty()) text += ": ";
  return text + problem.message;
}

ShowError::ShowError(std::vector<Problem> problems)
    : std::runtime_error(problems.empty() ? "The show cannot be loaded." : ToString(problems.front())),
      problems_(std::move(problems)) {}

}  // namespace tesk_midi
