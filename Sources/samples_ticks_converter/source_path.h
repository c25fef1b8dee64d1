#pragma once

// The source that assertion texts of this folder name, whichever of its files they come from.
namespace samples_ticks_converter {

inline constexpr char kSourcePath[] = "Sources/samples_ticks_converter";

}  // namespace samples_ticks_converter
