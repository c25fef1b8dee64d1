#pragma once

#include <istream>
#include <string>
#include <vector>

namespace orbel::host {

// What a performer can do, at the keys as well as in a script.
enum class CommandKind {
  Go,        // leave the vamp, or go on from the caesura
  Again,     // play the safety once more
  Next,      // the next song
  Previous,  // back to the start of the song, or to the song before
  Pause,
  Play,
  Stop,
  Left,       // to the place before
  Right,      // to the next place
  Seek,       // to `position`
  Tempo,      // tempo scale `number`
  Transpose,  // `number` semitones
  Faster,     // by a hundredth of the recorded tempo
  Slower,
  Higher,  // by a semitone
  Lower,
  AsWritten,  // neither another tempo nor another key than the song's own
};

// What a tempo scale and a transposition may be.
constexpr double kSlowestTempo = 0.25;
constexpr double kFastestTempo = 4.0;
constexpr int kMostSemitones = 24;

struct Command {
  CommandKind kind = CommandKind::Go;
  double number = 0.0;
  std::string position;
};

// The words for a command, as in a script.
std::string ToString(const Command& command);

// When a line of a script acts.
enum class MomentKind {
  At,       // when `position` is reached for the `pass`-th time
  Waiting,  // when playback stands at a caesura
  Time,     // after `seconds` of output
};

struct ScriptLine {
  MomentKind moment = MomentKind::At;
  std::string position;
  int pass = 1;
  double seconds = 0.0;
  Command command;
  int line = 0;  // from 1
};

// Reads a script, one command a line; '#' starts a comment:
//   at 9.1 go | at 9.1 pass 3 go | waiting go | time 12.500 stop
// Throws Failure with `name`, the line, what was found and what was expected.
std::vector<ScriptLine> ReadScript(std::istream& in, const std::string& name);
std::vector<ScriptLine> ReadScriptFile(const std::string& path);

}  // namespace orbel::host
