#pragma once

// The seconds that a deleter thread sleeps through. They pass in a millisecond each unless a test holds them.
// Takes the place of the system's sleep in the program.
namespace test_support::deleter_clock {

// From now on no second passes by itself.
void Hold();
// Lets one second pass and returns when the thread sleeps again, its work done. Only while held, with one
// deleter.
void PassOneSecond();
void LetGo();
// How long the last sleeper asked for, in seconds.
unsigned GetLastSleep();

}  // namespace test_support::deleter_clock
