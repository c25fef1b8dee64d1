#pragma once

#include <string>
#include <vector>

// What the fakes were told, all of them in one list, so that a test can see the order in which a transport
// operation goes to whom. Threads: ANY.
namespace fakes {

void Write(const std::string& entry);
// Everything since the last call.
std::vector<std::string> TakeJournal();

}  // namespace fakes
