#pragma once

#include <CLI/CLI.hpp>

namespace orbel::host::cli {

// A number from `least` to `most`, written as people write it: no "nan", no hexadecimal digits, a point in
// every locale.
CLI::Validator Between(double least, double most);
// The same without a fraction.
CLI::Validator WholeBetween(int least, int most);

}  // namespace orbel::host::cli
