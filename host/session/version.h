#pragma once

namespace orbel::host {

// As in the build's project declaration; a test holds the two together.
inline constexpr char kVersion[] = "0.1.0";

}  // namespace orbel::host
