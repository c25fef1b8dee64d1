#pragma once

#include <pthread.h>

#include <string>

// What a program that links observed_locks.cpp is told of every named lock in it: its mutexes are those of
// the utility library. Whoever links that defines the three.
//
// Threads    any; each is told on the thread that does it.
namespace test_support::observed_locks {

void Made(const std::string& name);
// A recursive lock as often as it is taken. Taken by TryLock too, when that succeeds.
void Taken(const std::string& name, const pthread_mutex_t* mutex);
// Just before.
void GivenUp(const std::string& name, const pthread_mutex_t* mutex);

}  // namespace test_support::observed_locks
