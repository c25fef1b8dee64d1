#include <algorithm>
#include <cctype>

#include "host/session/show_summary.h"
#include "host/session/shown_text.h"
#include "suite/midi/song_log.h"
#include "suite/midi/timeline.h"

namespace orbel::host {
namespace {

std::string LoopDetail(const CL::Loop& loop) {
  if (loop.GetEventCode() == codes::kRepeat) return std::to_string(loop.GetPasses()) + " passes";
  if (loop.GetEventCode() == codes::kSafety) return "once, and again when asked for";
  if (loop.GetExit() == CL::VampExit::NextBar) return "until go, left at the next bar";
  if (loop.GetExit() == CL::VampExit::NextBeat) return "until go, left at the next beat";
  return "until go, left at the end of the pass";
}

std::string LoopKind(const CL::Loop& loop) {
  std::string name = codes::editNameByTeskEventCode(loop.GetEventCode());
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return name;
}

}  // namespace

std::vector<CueSummary> SummariseCues(const CL::SongLog& log, const TL::Timeline& timeline,
                                      const SongClock& clock) {
  std::vector<CueSummary> cues;
  const auto at = [&](TickIndex tick) { return clock.PlaceOfTick(tick); };
  for (const CL::Loop& loop : log.loops) {
    cues.push_back(
        {LoopKind(loop), at(loop.abs_time()), at(loop.GetEndTime()), LoopDetail(loop), loop.GetLine()});
  }
  for (const CL::Cut& cut : log.cuts) {
    cues.push_back({"cut", at(cut.abs_time()), at(cut.GetEndTime()), "", cut.GetLine()});
  }
  for (const CL::Caesura& caesura : log.caesuras) {
    cues.push_back({"caesura", at(caesura.abs_time()), {}, "until go", caesura.GetLine()});
  }
  for (const CL::TempoScale& tempo : log.tempoScales) {
    cues.push_back(
        {"tempo", at(tempo.abs_time()), {}, "scale " + ShortNumber(tempo.GetScale()), tempo.GetLine()});
  }
  for (const CL::Transpose& transpose : log.transposes) {
    const std::string detail = std::to_string(transpose.GetSemitones()) + " semitones";
    cues.push_back({"transpose", at(transpose.abs_time()), {}, detail, transpose.GetLine()});
  }
  for (const CL::Marker& marker : log.markers) {
    cues.push_back({"marker", at(marker.abs_time()), {}, marker.GetName(), marker.GetLine()});
  }
  for (const CL::Click& click : log.clicks) {
    cues.push_back({"click", at(click.abs_time()), at(click.GetEndTime()), "", click.GetLine()});
  }
  for (const TL::PageNum& page : timeline.GetPageNums()) {
    cues.push_back({"page", at(page.abs_time()), {}, std::to_string(page.GetNumber()), 0});
  }
  std::stable_sort(cues.begin(), cues.end(),
                   [](const CueSummary& a, const CueSummary& b) { return a.at.tick < b.at.tick; });
  return cues;
}

}  // namespace orbel::host
