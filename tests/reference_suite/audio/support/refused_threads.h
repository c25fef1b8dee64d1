#pragma once

// The threads that this program starts, counted and refused: it is linked with --wrap=pthread_create.
// Threads: any.
namespace refused_threads {

// Starts counting anew: the `nth` thread from now on, from 1, is refused with EAGAIN, and every one behind it
// too when `forGood`; 0: none is.
void Refuse(int nth, bool forGood);
// How many have been asked for since.
int Asked();

}  // namespace refused_threads
