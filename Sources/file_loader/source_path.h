#pragma once

// The source that log entries of this folder name, whichever of its files they come from.
namespace file_loader {

inline constexpr char kSourcePath[] = "Sources/file_loader";

}  // namespace file_loader
