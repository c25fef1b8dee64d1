#pragma once

#include <cstddef>

namespace tesk_audio {

// libvorbis, libogg and libsndfile do not look whether they were given the memory that they ask for, and end
// the program where they were not. So memory is kept free for them: a claim lives as long as a decoder may
// ask for some, and whoever takes a large piece besides leaves what is claimed.
//
// A library that is refused within its claim still ends a program that has nothing else for it. That takes a
// system that counts every byte (an address-space limit, or overcommitting switched off) and others that take
// memory unasked: threads of this program's host, or other programs.
//
// Threads    ANY; no lock. Claims are counted, and what is free is asked of the system by taking it and
//            giving it back.
// Errors     std::bad_alloc.
class LibraryMemoryClaim {
 public:
  LibraryMemoryClaim();
  ~LibraryMemoryClaim();
  LibraryMemoryClaim(const LibraryMemoryClaim&) = delete;
  LibraryMemoryClaim& operator=(const LibraryMemoryClaim&) = delete;
};

// Whether `bytes` can be had besides what is claimed; throws when not.
void RequireMemoryBesidesClaims(std::size_t bytes);

}  // namespace tesk_audio
