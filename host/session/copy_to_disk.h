#pragma once

#include <string>

namespace orbel::host {

// Copies a file into the show, under a name that is free; returns when all of it is on the disk. Throws
// Failure.
void CopyToDisk(const std::string& from, const std::string& to);

}  // namespace orbel::host
