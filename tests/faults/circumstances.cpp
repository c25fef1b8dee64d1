#include "tests/faults/circumstances.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace faults {
Environment::Environment(Variables variables) : variables_(std::move(variables)) {
  for (const auto& [name, value] : variables_) ::setenv(name.c_str(), value.c_str(), 1);
}

Environment::~Environment() {
  for (const auto& [name, value] : variables_) ::unsetenv(name.c_str());
}

Environment Refusing(Environment::Variables variables) {
  variables.emplace_back("LD_PRELOAD", ORBEL_REFUSALS);
  return Environment(std::move(variables));
}

void ExpectEndedInWords(const host_tests::Ended& run) {
  EXPECT_GE(run.status, 0) << "a signal ended it\n" << run.messages;
  EXPECT_NE(run.messages, "");
  for (const char* const slip : {"terminate called", "Assert", "assert", "basic_string",
                                 "std::", "vector::", "map::at", "exception", "AddressSanitizer"}) {
    EXPECT_THAT(run.messages, testing::Not(testing::HasSubstr(slip)));
  }
}

}  // namespace faults
