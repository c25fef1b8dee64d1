#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/host/run_orbel.h"

// Under what circumstances a test runs the program: programs that begin while one of these lives inherit it.
// Threads: the test's own.
namespace faults {

// Variables of the environment.
class Environment {
 public:
  using Variables = std::vector<std::pair<std::string, std::string>>;
  explicit Environment(Variables variables);
  ~Environment();
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  Variables variables_;
};

// The system's calls answer as `variables` say; they stand at the top of preload/refusals.cpp.
Environment Refusing(Environment::Variables variables);

// The end of a program that was refused something: by itself, and with words that a person wrote.
void ExpectEndedInWords(const host_tests::Ended& run);

}  // namespace faults
