#include <algorithm>
#include <tuple>
#include <utility>

#include "reference_suite/midi/show_folder/placed_cue.h"

namespace tesk_midi {

namespace {

bool IsLoop(CueKind kind) {
  return kind == CueKind::Vamp || kind == CueKind::Safety || kind == CueKind::Repeat;
}

// Of these one can hold at a tick.
bool IsAloneAtItsTick(CueKind kind) {
  return kind == CueKind::Tempo || kind == CueKind::Transpose || kind == CueKind::Page ||
         kind == CueKind::Caesura || kind == CueKind::Cut;
}

bool ComesLater(const PlacedCue& a, const PlacedCue& b) {
  return std::tie(a.cue->place.line, a.cue->place.column) > std::tie(b.cue->place.line, b.cue->place.column);
}

// Complains at the one that is written later, and names the other.
void Complain(const PlacedCue& a, const PlacedCue& b, const std::string& what, FileProblems* problems) {
  const PlacedCue& second = ComesLater(a, b) ? a : b;
  const PlacedCue& first = ComesLater(a, b) ? b : a;
  problems->Error(second.cue->place, "this " + std::string(CueWord(second.cue->kind)) + " (" +
                                         ShownRange(*second.cue) + ") and the " + CueWord(first.cue->kind) +
                                         " of line " + std::to_string(first.cue->place.line) + " (" +
                                         ShownRange(*first.cue) + ") " + what);
}

void CheckSameTicks(std::vector<PlacedCue> cues, FileProblems* problems) {
  const auto key = [](const PlacedCue& placed) { return std::make_tuple(placed.cue->kind, placed.begin); };
  std::stable_sort(cues.begin(), cues.end(),
                   [&](const PlacedCue& a, const PlacedCue& b) { return key(a) < key(b); });
  for (std::size_t i = 1; i < cues.size(); ++i) {
    if (key(cues[i]) != key(cues[i - 1]) || !IsAloneAtItsTick(cues[i].cue->kind)) continue;
    Complain(cues[i], cues[i - 1], "lie at one place; keep one of them.", problems);
  }
}

void CheckLoops(std::vector<PlacedCue> loops, FileProblems* problems) {
  // Outer loops before those inside them.
  std::stable_sort(loops.begin(), loops.end(), [](const PlacedCue& a, const PlacedCue& b) {
    return a.begin != b.begin ? a.begin < b.begin : a.end > b.end;
  });
  std::vector<PlacedCue> around;  // the loops that contain the present place, innermost last
  for (const PlacedCue& loop : loops) {
    while (!around.empty() && around.back().end <= loop.begin) around.pop_back();
    if (around.empty() || loop.end < around.back().end ||
        (loop.end == around.back().end && loop.begin != around.back().begin)) {
      around.push_back(loop);
    } else if (loop.end == around.back().end) {
      Complain(loop, around.back(),
               "are the same passage, so that neither lies inside the other; keep one of them.", problems);
    } else {
      Complain(loop, around.back(), "overlap in part; loops must lie one inside the other or apart.",
               problems);
    }
  }
}

}  // namespace

std::string ShownRange(const WrittenCue& cue) {
  return cue.end ? cue.begin.shown + " to " + cue.end->shown : cue.begin.shown;
}

void CheckConflicts(const std::vector<PlacedCue>& cues, FileProblems* problems) {
  std::vector<PlacedCue> loops;
  for (const PlacedCue& cue : cues) {
    if (IsLoop(cue.cue->kind)) loops.push_back(cue);
  }
  CheckLoops(std::move(loops), problems);
  CheckSameTicks(cues, problems);
}

}  // namespace tesk_midi
