#include "tests/faults/circumstances.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace faults {
namespace {

constexpr uid_t kNobody = 65534;

}  // namespace

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

Limit::Limit(__rlimit_resource resource, rlim_t value) : resource_(resource) {
  EXPECT_EQ(::getrlimit(resource_, &before_), 0);
  const rlimit lower{value, before_.rlim_max};
  EXPECT_EQ(::setrlimit(resource_, &lower), 0);
}

Limit::~Limit() {
  EXPECT_EQ(::setrlimit(resource_, &before_), 0);
}

bool Nobody::IsPossible() {
  return ::geteuid() == 0;
}

Nobody::Nobody() {
  EXPECT_EQ(::seteuid(kNobody), 0);
}

Nobody::~Nobody() {
  EXPECT_EQ(::seteuid(0), 0);
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
