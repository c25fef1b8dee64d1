#pragma once

#include <string>
#include <vector>

// What the locks of this program ask of their implementations, in order: "NAME: operation". One thread at a
// time.
std::vector<std::string>& LockImplCalls();
// What the next TryLock answers.
bool& TryLockAnswer();
