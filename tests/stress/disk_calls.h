#pragma once

// The disk of this program: its reads come in small pieces, late when it is slow, and fail when it is bad.
// Threads: ANY.
namespace stress::disk {

// Every read takes up to this long.
void SetSlowness(unsigned microseconds);
// One read in so many fails with EIO; 0: none.
void SetFailures(unsigned oneIn);
// How many threads have read since this was last asked.
unsigned TakeReaders();

}  // namespace stress::disk
