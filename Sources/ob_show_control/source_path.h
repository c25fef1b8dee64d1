#pragma once

// The source that assertion texts of this folder name, whichever of its files they come from.
namespace ob_show_control {

inline constexpr char kSourcePath[] = "Sources/ob_show_control";

}  // namespace ob_show_control
