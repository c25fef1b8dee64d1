#include "suite/core/event_codes.h"

#include <map>

namespace codes {

const std::string& editNameByTeskEventCode(int code) {
  static const std::map<int, std::string> names = {
      {kTempo, "Tempo"},     {kMeter, "Meter"},           {kKey, "Key"},
      {kPageNum, "PageNum"}, {kBarsBeats, "BarsBeats"},   {kVamp, "Vamp"},
      {kRepeat, "Repeat"},   {kSafety, "Safety"},         {kCut, "Cut"},
      {kCaesura, "Caesura"}, {kTempoScale, "TempoScale"}, {kTranspose, "Transpose"},
      {kMarker, "Marker"},   {kClick, "Click"},
  };
  static const std::string unknown = "Unknown";
  const auto name = names.find(code);
  return name != names.end() ? name->second : unknown;
}

}  // namespace codes
