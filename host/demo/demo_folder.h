#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/demo/demo_error.h"

namespace orbel::host::demo {

inline constexpr char kShowName[] = "show.toml";

// The folder that the demo is written into, after it has been seen to hold nothing of anybody else.
//
// Errors     DemoError from every operation.
// Threads    plain object.
class DemoFolder {
 public:
  // Makes the folder if it is missing. `names` are all the files that will be written, `mark` is the first
  // line of a demo's show file, or how it begins.
  DemoFolder(std::filesystem::path folder, std::set<std::string> names, std::string mark);

  // Unless Keep was called, takes away again what was not there before.
  ~DemoFolder();
  DemoFolder(const DemoFolder&) = delete;
  DemoFolder& operator=(const DemoFolder&) = delete;

  // Writes the file `name`, one of the names, whole or not at all.
  void Write(const std::string& name, const std::vector<std::uint8_t>& bytes);
  // The demo is complete.
  void Keep() { made_.clear(); }

 private:
  void MakeFolder_(const std::filesystem::path& folder);
  void TakeAway_() noexcept;
  void RequireNothingForeign_() const;
  void RequireMark_() const;
  bool IsOurs_(const std::filesystem::directory_entry& entry) const;

  std::filesystem::path folder_;
  std::set<std::string> names_;
  std::set<std::string> subfolders_;
  std::string mark_;
  std::vector<std::filesystem::path> made_;  // files and folders, in their order
};

}  // namespace orbel::host::demo
