#pragma once

#include <string>

namespace orbel::host {

// Keeps the program's memory from being moved out to disk, so that no song has to be fetched back while it
// plays. Where the system does not grant that everything works all the same; returns what to do about it
// then, and nothing otherwise. Before other threads are started. Threads: HOST.
std::string LockMemory();

}  // namespace orbel::host
