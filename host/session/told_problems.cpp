#include "host/session/told_problems.h"

namespace orbel::host {
namespace {

std::string AndMore(std::size_t count, const std::string& kind, const std::string& showPath) {
  return "and " + std::to_string(count) + " more " + kind + (count == 1 ? "" : "s") + "; \"orbel check " +
         showPath + "\" looks at every song";
}

}  // namespace

std::vector<std::string> TellProblems(std::span<const tesk_midi::Problem> problems,
                                      const std::string& showPath) {
  std::vector<std::string> told;
  std::size_t errors = 0;
  std::size_t warnings = 0;
  for (const tesk_midi::Problem& problem : problems) {
    std::size_t& count = problem.isWarning ? warnings : errors;
    if (++count > kMostProblemsTold) continue;
    told.push_back((problem.isWarning ? "warning: " : "") + tesk_midi::ToString(problem));
  }
  if (errors > kMostProblemsTold) told.push_back(AndMore(errors - kMostProblemsTold, "problem", showPath));
  if (warnings > kMostProblemsTold)
    told.push_back(AndMore(warnings - kMostProblemsTold, "warning", showPath));
  return told;
}

}  // namespace orbel::host
