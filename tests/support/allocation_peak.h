#pragma once

#include <cstddef>

namespace test_support {

// The most memory of operator new that all threads together have held at a time since this was made, above
// what they held then. The program must link allocation_peak.cpp; one lives at a time.
class AllocationPeak {
 public:
  AllocationPeak();
  AllocationPeak(const AllocationPeak&) = delete;
  AllocationPeak& operator=(const AllocationPeak&) = delete;

  std::size_t Bytes() const;

 private:
  const std::size_t before_;
};

}  // namespace test_support
