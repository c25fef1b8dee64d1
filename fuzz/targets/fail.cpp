#include <cstdlib>
#include <iostream>

#include "fuzz/targets/targets.h"

void fuzz::Fail(const std::string& promise) {
  std::cerr << "broken promise: " << promise << std::endl;
  std::abort();
}
