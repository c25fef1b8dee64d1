#pragma once

#include <functional>
#include <limits>
#include <map>

// The control stream with values that a test gives, whatever the tick. What moves it goes to the journal as
// "stream.OPERATION ARGUMENTS". One at a time: each new one starts with a fresh script.
// Threads: the script belongs to the test's thread and is read while nobody changes it.
namespace fakes::how_to_play {

struct Values {
  double tempoScale = 1.0;
  int transposition = 0;
};

struct Script {
  unsigned tick = 0;  // where the stream stands
  unsigned nextDspEvent = std::numeric_limits<unsigned>::max();
  Values now;
  Values beforeAdvance;
  Values beforeSeek;
  std::map<unsigned, Values> atTick;  // for the queries about a tick
  bool writesJournal = true;
  std::function<void()> onSetData;  // called in the middle of SetData
};

Script& GetScript();

}  // namespace fakes::how_to_play
