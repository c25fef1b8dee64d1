#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

namespace test_support {

// A user who may do nothing special. Root may do everything, and so becomes somebody else while it lives;
// whoever is not root is nobody already. Threads: holds for the whole process.
class Nobody {
 public:
  Nobody() : wasRoot_(::geteuid() == 0) {
    if (wasRoot_) {
      EXPECT_EQ(::seteuid(kNobody), 0);
    }
  }
  ~Nobody() {
    if (wasRoot_) {
      EXPECT_EQ(::seteuid(0), 0);
    }
  }
  Nobody(const Nobody&) = delete;
  Nobody& operator=(const Nobody&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  bool wasRoot_;
};

}  // namespace test_support
