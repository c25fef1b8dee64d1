#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace orbel::host::demo {

// Writes `bytes` under another name (exc::UnfinishedFile), sees them safely on the disk and only then gives
// them the name of `path`, over a file that may be there. On failure nothing is left behind and what was
// there stays. Throws DemoError, which names the file, the system's reason and how far it came.
void WriteFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);

}  // namespace orbel::host::demo
