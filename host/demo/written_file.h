#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace orbel::host::demo {

// How a file is called until it is whole; a run that was killed may leave one behind.
inline constexpr std::string_view kPartSuffix = ".part";

// Writes `bytes` under another name, sees them safely on the disk and only then gives them the name of
// `path`, over a file that may be there. On failure nothing is left behind and what was there stays. Throws
// DemoError, which names the file, the system's reason and how far it came.
void WriteFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);

}  // namespace orbel::host::demo
