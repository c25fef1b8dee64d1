#pragma once

#include <string>

namespace orbel::host {

// Ctrl-C, and what else ends a program from outside: counted, not obeyed at once. A closed pipe and a file
// size limit are left to the writes that meet them, a closed terminal to whoever looks at it; a program that
// was started so that it outlives its terminal (nohup) is not told of it.
void CatchInterrupts();
// How often Ctrl-C (or a request to terminate, which counts twice) has come.
int InterruptCount();
// The terminal has gone away.
bool TerminalHasHungUp();

// Throws Failure("interrupted: " + `what`) when an interrupt has come or the terminal has gone away. For what
// is written piece by piece.
void RequireUninterrupted(const std::string& what);

// While it lives, an interrupt ends the program then and there, status kFailed, with the words "interrupted:
// " and `what`, in which all that controls a terminal is escaped. For what can be broken off anywhere:
// nothing is written meanwhile that would stay behind half done.
//
// Threads    the program's first; one at a time. The signal may come on any thread.
class EndedByInterrupts {
 public:
  enum class HangUp { GoesOn, Ends };
  // Throws Failure with the same words when an interrupt has come already.
  EndedByInterrupts(const std::string& what, HangUp hangUp);
  ~EndedByInterrupts();
  EndedByInterrupts(const EndedByInterrupts&) = delete;
  EndedByInterrupts& operator=(const EndedByInterrupts&) = delete;

 private:
  const std::string words_;
};

}  // namespace orbel::host
