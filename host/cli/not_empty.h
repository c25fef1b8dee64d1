#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orbel::host::cli {

// A text that is not empty, as what an unset variable of a shell leaves is. `what` it is and what to give.
CLI::Validator NotEmpty(const std::string& what, const std::string& cure);

// Those that every verb has.
CLI::Validator GivesAShow();
CLI::Validator GivesASong();

}  // namespace orbel::host::cli
