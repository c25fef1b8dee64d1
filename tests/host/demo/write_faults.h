#pragma once

// Stands between the program and the system's calls that write, so that a full or broken disk can be played.
namespace write_faults {

struct Faults {
  long long room = -1;        // bytes that still find a place; -1: as many as there are
  int interruptedWrites = 0;  // so many writes are interrupted first
  bool failSync = false;
  bool failClose = false;
  bool failRename = false;
};

extern Faults faults;

// Sets faults for a block.
class Provoke {
 public:
  explicit Provoke(const Faults& wanted) { faults = wanted; }
  ~Provoke() { faults = {}; }
  Provoke(const Provoke&) = delete;
  Provoke& operator=(const Provoke&) = delete;
};

}  // namespace write_faults
