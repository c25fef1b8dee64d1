#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

// A folder of a test's own, gone with the test.
class ScratchFolder {
 public:
  ScratchFolder() { path_ = test_support::MakeTemporaryFolder(); }
  ~ScratchFolder() {
    std::error_code ignored;  // nothing that is left behind in a temporary folder spoils a test
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline std::vector<std::uint8_t> BytesOfFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void PutFile(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

// Every file of a folder, from it, in order.
inline std::vector<std::string> FilesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) names.push_back(entry.path().lexically_relative(folder).string());
  }
  std::sort(names.begin(), names.end());
  return names;
}
