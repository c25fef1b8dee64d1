#pragma once

#include <string>

// The codes of every event that a timeline or a change log can hold, and their names.
// 64 and 65 are the codes by which a loop event is known as a vamp or as a repeat.
namespace codes {

enum EventCode : int {
  kTempo = 1,
  kMeter = 2,
  kKey = 3,
  kPageNum = 4,
  kBarsBeats = 5,
  kVamp = 64,
  kRepeat = 65,
  kSafety = 66,
  kCut = 67,
  kCaesura = 68,
  kTempoScale = 69,
  kTranspose = 70,
  kMarker = 71,
  kClick = 72,
};

// The name of a code as it is shown to people ("Vamp"); "Unknown" for a code that is none of ours.
const std::string& editNameByTeskEventCode(int code);

}  // namespace codes
