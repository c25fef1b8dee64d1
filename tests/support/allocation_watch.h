#pragma once

namespace test_support {

// Counts what this thread allocates while it lives: operator new and, where no sanitizer has taken them over,
// malloc, calloc, realloc and aligned_alloc too. The program must link allocation_watch.cpp. Watches nest;
// each counts from its own beginning.
class AllocationWatch {
 public:
  AllocationWatch();
  ~AllocationWatch();
  AllocationWatch(const AllocationWatch&) = delete;
  AllocationWatch& operator=(const AllocationWatch&) = delete;

  // Not while another thread is meant: each thread has its own count.
  int Count() const;

 private:
  int before_;
};

}  // namespace test_support
