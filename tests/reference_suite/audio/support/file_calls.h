#pragma once

#include <atomic>
#include <functional>

// Makes the system's calls on files misbehave. This program's own `pread` and `stat` stand before the
// system's. Threads: set while nobody reads.
namespace file_calls {

// Bytes from `failReadsFrom` up to `failReadsTo` cannot be read: EIO.
extern long long failReadsFrom;
extern long long failReadsTo;
// How often at most.
extern std::atomic<int> failuresLeft;
// That many reads end with EINTR.
extern std::atomic<int> interruptedReads;
extern std::atomic<int> readCount;
// Happens once, before the first read that ends behind `happensBehind`, or before the `happensAtRead`-th.
extern std::function<void()> happens;
extern long long happensBehind;
extern int happensAtRead;
// Every question about a path is answered "a regular file", whatever is there.
extern bool pathsAreRegularFiles;

void Reset();

}  // namespace file_calls
