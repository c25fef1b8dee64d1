#pragma once

#include <pthread.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

// Records how the locks of the program nest, by their names, and on what threads wait while they hold them.
// The program links observed_locks.cpp in place of the utility library's locks, and wait_calls.cpp. At most
// 63 names.
//
// Threads    ANY. Recording synchronises nothing, so that it hides no race from a thread checker.
namespace test_support::lock_order {

// `inner` was taken by a thread that held `outer`.
struct Nesting {
  std::string outer;
  std::string inner;
  // What every such thread held besides.
  std::set<std::string> behind;
};

// ---- what was seen ---------------------------------------------------------------------------------
std::vector<Nesting> GetNestings();
// In words: waits and joins with locks held that the wait does not give up.
std::vector<std::string> GetBadWaits();

// Pairs (outer, inner) that need no remark. Once given, any other is written to stderr with its stack when it
// is first seen.
void Expect(const std::set<std::pair<std::string, std::string>>& pairs);
// Nothing seen, nothing expected. With no lock held anywhere.
void Reset();

// ---- what waits report -----------------------------------------------------------------------------
// A condition is waited for with `mutex`, which is given up once meanwhile.
void WaitsWith(const pthread_mutex_t* mutex);
// This thread waits for the end of another.
void Joins();

// Called before (`begins`) and after each join of the program. Set it before there are threads.
void OnJoin(void (*hook)(pthread_t thread, bool begins));
void CallJoinHook(pthread_t thread, bool begins);

}  // namespace test_support::lock_order
