#pragma once

#include <pthread.h>

#include <string>

namespace tesk_audio {

// Starts threads of devices and outputs: real-time ones where the system grants it, and in the same words for
// all when it has none to give.
//
// Threads    ANY.

// Throws TESKAudioError: "`who` cannot start its thread: ...".
pthread_t StartThread(void* (*body)(void*), void* argument, const std::string& who);

// First come, first served among real-time threads, at up to 60 of them: above everything ordinary, as a rule
// below the sound system's own. An ordinary thread when the system does not grant that, and once a line on
// the console that says what to do about it. Throws as above.
pthread_t StartRealTimeThread(void* (*body)(void*), void* argument, const std::string& who);

// The calling thread, when it is a real-time one, gives way to a thread of that priority from now on, and to
// nothing below it; 0: it has the one it was started with again. What makes frames must not hold up what
// takes them.
void GiveWayTo(int priority);

// Threads that the calling one starts from now on are ordinary ones, whatever it is itself: what a render
// thread has decoded in an attacca must not stand above the sound system.
void KeepRealTimeToOneself();

}  // namespace tesk_audio
