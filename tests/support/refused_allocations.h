#pragma once

// Memory that runs out on demand: the operator new of the program that links refused_allocations.cpp.
namespace test_support {

// While it lives, `granted` more allocations succeed; the one after them is refused, and every later one too
// when `forGood`. One at a time.
//
// Threads    counts those of all threads, or of the one that makes it alone.
class RefusedAllocations {
 public:
  enum class Of { ThisThread, AllThreads };
  RefusedAllocations(Of threads, long granted, bool forGood);
  ~RefusedAllocations();
  RefusedAllocations(const RefusedAllocations&) = delete;
  RefusedAllocations& operator=(const RefusedAllocations&) = delete;

  // Grants everything from now on.
  void End();
  // How many have been refused.
  long Count() const;
};

}  // namespace test_support
