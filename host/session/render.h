#pragma once

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orbel::host {

struct RenderOptions {
  std::string showPath;
  std::string outPath;
  std::string song;  // empty: the first that has audio, and no other when that cannot be played
  std::string from;  // a position; empty: the start
  int vampPasses = 1;
  double caesuraSilence = 0.0;  // seconds
  std::string scriptPath;
  std::string tracePath;
  double crossfadeMs = 5.0;
  double fadeMs = 3.0;  // where a script pauses, stops, plays on or seeks; 0 leaves every sample as it is
  double rateHz = 0.0;  // 0: the audio's own
  std::string stretch = "finer";
  std::string format = "float";
};

struct RenderProgress {
  std::string song;
  double fraction = 0.0;  // of the song, 0 to 1
  double seconds = 0.0;   // of output
};

struct RenderResult {
  double seconds = 0.0;
  long long frames = 0;
  bool cannotEnd = false;             // a vamp or a caesura that nothing leaves
  std::string message;                // why it ended where it did, when that is not the end of the song
  std::vector<std::string> problems;  // of the show, for the reader
};

// What hears of a render; each may be empty.
struct RenderListener {
  std::function<void(const RenderProgress&)> progress;  // now and then
  // What is waited for longer than a moment, in words. On another thread, while Render's own does nothing
  // else.
  std::function<void(const std::string&)> waiting;
  // When the file is complete and has its name. Render returns after taking the engine down, which can wait a
  // second for the thread that frees audio; whoever ends the program anyway need not wait for that.
  std::function<void(const RenderResult&)> complete;
  // When it has failed and no file is left: likewise. Not without memory for the error.
  std::function<void(const std::exception&)> failed;
};

// Plays into a sound file through the engine, faster than real time. When Ctrl-C was pressed, or anything
// fails, there is no file of the final name. Throws Failure and the errors of show and audio.
void Render(const RenderOptions& options, const RenderListener& listener);

}  // namespace orbel::host
