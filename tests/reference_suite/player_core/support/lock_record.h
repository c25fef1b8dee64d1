#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

// Sees every named lock of the program: the test program links its own lock implementations.
namespace test_support::locks {

// The names of the locks that this thread holds, in the order in which they were taken; a recursive lock as
// often as it is held.
std::vector<std::string> GetHeld();

// Every pair (outer, inner) of different locks that a thread has nested since the last call of Forget.
std::set<std::pair<std::string, std::string>> GetNestings();
void Forget();

}  // namespace test_support::locks
