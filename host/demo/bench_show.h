#pragma once

#include <filesystem>

namespace orbel::host {

// Writes the show on which "orbel bench" measures: silent, with bars of a quarter of a second. Song 1 has a
// vamp on bar 2, song 2 a caesura before bar 2. Throws DemoError.
void WriteBenchShow(const std::filesystem::path& folder);

}  // namespace orbel::host
