#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace test_support {

// Takes what is written to std::cout, and so to exc::thread_safe_cout, while it lives. Read the text when the
// threads that write have ended.
class CoutCapture {
 public:
  CoutCapture() : before_(std::cout.rdbuf(text_.rdbuf())) {}
  ~CoutCapture() { std::cout.rdbuf(before_); }
  CoutCapture(const CoutCapture&) = delete;
  CoutCapture& operator=(const CoutCapture&) = delete;

  std::string Text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::streambuf* before_;
};

}  // namespace test_support
