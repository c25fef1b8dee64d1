#pragma once

namespace orbel::host {

// Ctrl-C, and what else ends a program from outside: counted, not obeyed at once. A closed pipe and a file
// size limit are left to the writes that meet them, a closed terminal to whoever looks at it.
void CatchInterrupts();
// How often Ctrl-C (or a request to terminate, which counts twice) has come.
int InterruptCount();
// The terminal has gone away.
bool TerminalHasHungUp();

}  // namespace orbel::host
