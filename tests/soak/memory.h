#pragma once

namespace soak {

// Bytes that the program has from the heap now.
long long HeapBytes();
// Bytes of memory that the process occupies, after what is free has been given back.
long long ResidentBytes();
// Bytes of addresses that the process has reserved, stacks included.
long long AddressBytes();
// Threads of the process that have not ended.
int CountThreads();

}  // namespace soak
