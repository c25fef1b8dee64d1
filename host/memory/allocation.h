#pragma once

// The program's own malloc, calloc, realloc, free and operator new, which the whole process uses, the
// libraries that it is linked with included. They ask the system's; where that has nothing to give, C++ is
// told by std::bad_alloc as ever, and the callers of malloc get a piece of a reserve. Some of these do not
// look (libvorbis, libogg), and end the program where a song could have been left out: they go on, what is
// C++ around them meets the same shortage and says so in words, and they give the piece back.
namespace orbel::host {

// Until this is called, C++ has the reserve too: what the libraries make before `main` has nobody to tell.
// Threads: MAIN, once, at the beginning of `main`.
void RefuseWhereThereIsNoMemory() noexcept;

// While one lives, C++ has the reserve too on the thread that made it, for what is small: a performance goes
// on and stays operable, where a line of text could end it.
// Threads: ANY, each for itself.
class SmallPiecesFromReserve {
 public:
  // In bytes. Songs and what else is read for them ask for more.
  static constexpr unsigned kMost = 4096;

  SmallPiecesFromReserve() noexcept;
  ~SmallPiecesFromReserve();
  SmallPiecesFromReserve(const SmallPiecesFromReserve&) = delete;
  SmallPiecesFromReserve& operator=(const SmallPiecesFromReserve&) = delete;
};

}  // namespace orbel::host
