#pragma once

#include <functional>

// Makes the system's calls on files misbehave. This program's own `pread` and `stat` stand before the
// system's.
namespace file_calls {

// Bytes from `failReadsFrom` up to `failReadsTo` cannot be read: EIO.
extern long long failReadsFrom;
extern long long failReadsTo;
// That many reads end with EINTR.
extern int interruptedReads;
extern int readCount;
// Happens once, before the first read that ends behind `happensBehind`.
extern std::function<void()> happens;
extern long long happensBehind;
// Every question about a path is answered "a regular file", whatever is there.
extern bool pathsAreRegularFiles;

void Reset();

}  // namespace file_calls
