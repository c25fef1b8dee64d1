#pragma once

#include <iosfwd>
#include <string>

namespace tesk_audio {

// Bytes that can still be had without driving the machine into swapping, or the process over a limit that it
// has been given (address space, control groups); the largest number when the system does not tell. Asked
// before decoding, because the system grants memory that it does not have and kills later, or grants it until
// a limit is reached and all of it was for nothing.
unsigned long long AvailableMemoryBytes();

// What is left for a process whose control groups are `groups`, as the system lists them (version 2), under
// the limits of its own group and of every one that holds that; `root` is the folder of the outermost.
unsigned long long GroupMemoryBytes(std::istream& groups, const std::string& root);

}  // namespace tesk_audio
