#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace test_support {

// A new and empty folder, which whoever asks for it removes.
inline std::filesystem::path MakeTemporaryFolder() {
  // mkdtemp puts letters of its own in the place of the last six.
  std::string pattern = (std::filesystem::temp_directory_path() / "orbel_test_XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder: " + pattern);
  return pattern;
}

// A folder of its own that goes, with everything in it, when this object does.
class TemporaryFolder {
 public:
  TemporaryFolder() = default;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string Path() const { return path_.string(); }
  std::string Path(const std::string& inside) const { return (path_ / inside).string(); }
  void MakeFolder(const std::string& inside) const { std::filesystem::create_directories(path_ / inside); }
  void WriteFile(const std::string& inside, const std::string& bytes = "") const {
    std::filesystem::create_directories((path_ / inside).parent_path());
    std::ofstream(path_ / inside, std::ios::binary) << bytes;
  }

 private:
  std::filesystem::path path_ = MakeTemporaryFolder();
};

}  // namespace test_support
