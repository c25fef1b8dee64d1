#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace test_support {

// A limit of the system (RLIMIT_NOFILE, RLIMIT_FSIZE, ...) while it lives; programs that begin meanwhile
// inherit it. Threads: holds for the whole process.
class Limit {
 public:
  Limit(__rlimit_resource resource, rlim_t value) : resource_(resource) {
    EXPECT_EQ(::getrlimit(resource_, &before_), 0);
    const rlimit lower{value, before_.rlim_max};
    EXPECT_EQ(::setrlimit(resource_, &lower), 0);
  }
  ~Limit() { EXPECT_EQ(::setrlimit(resource_, &before_), 0); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;

 private:
  __rlimit_resource resource_;
  rlimit before_{};
};

}  // namespace test_support
