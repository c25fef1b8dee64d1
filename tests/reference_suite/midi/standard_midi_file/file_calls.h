#pragma once

#include <sys/stat.h>
#include <unistd.h>

// Stands between the reader and the system's file calls, so that failures that no real file can be made to
// give reach it. Without a hook the calls go straight through.
namespace file_calls {

extern int interruptedReads;  // so many reads are interrupted first
extern bool failStatus;       // the file's kind cannot be told
extern int readCount;

}  // namespace file_calls
