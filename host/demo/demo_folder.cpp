#include "host/demo/demo_folder.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

#include "exc/file/unfinished_file.h"
#include "host/demo/written_file.h"

namespace orbel::host::demo {

namespace fs = std::filesystem;

DemoFolder::DemoFolder(fs::path folder, std::set<std::string> names, std::string mark)
    : folder_(std::move(folder)), names_(std::move(names)), mark_(std::move(mark)) {
  for (const std::string& name : names_) {
    const std::string subfolder = fs::path(name).parent_path().string();
    if (!subfolder.empty()) subfolders_.insert(subfolder);
  }
  try {
    RequireNothingForeign_();
  } catch (const fs::filesystem_error& error) {
    throw DemoError(folder_.string() + ": not read as a folder (" + error.code().message() +
                    "); choose another place for the demo.");
  }
  try {
    MakeFolder_(folder_);
    for (const std::string& subfolder : subfolders_) MakeFolder_(folder_ / subfolder);
  } catch (const DemoError&) {
    TakeAway_();
    throw;
  }
}

DemoFolder::~DemoFolder() {
  TakeAway_();
}

void DemoFolder::Write(const std::string& name, const std::vector<std::uint8_t>& bytes) {
  const fs::path path = folder_ / name;
  std::error_code ignored;
  const bool isNew = !fs::exists(path, ignored);
  WriteFile(path, bytes);
  if (isNew) made_.push_back(path);
}

// With the folders above it that are missing.
void DemoFolder::MakeFolder_(const fs::path& folder) {
  std::error_code error;
  std::vector<fs::path> missing;
  for (fs::path path = folder; !path.empty() && !fs::exists(path, error); path = path.parent_path())
    missing.push_back(path);
  made_.insert(made_.end(), missing.rbegin(), missing.rend());
  fs::create_directories(folder, error);
  if (error) {
    throw DemoError(folder.string() + ": not made as a folder (" + error.message() +
                    "); choose another place for the demo.");
  }
}

// The last first, so that folders are empty by then; one into which somebody has put something stays.
void DemoFolder::TakeAway_() noexcept {
  std::error_code ignored;
  for (auto path = made_.rbegin(); path != made_.rend(); ++path) fs::remove(*path, ignored);
  made_.clear();
}

void DemoFolder::RequireNothingForeign_() const {
  if (!fs::exists(folder_)) return;
  if (fs::is_empty(folder_)) return;
  // Links are not followed: what they lead to is not ours.
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder_)) {
    if (IsOurs_(entry)) continue;
    throw DemoError(
        folder_.string() + ": holds \"" + entry.path().lexically_relative(folder_).string() +
        "\", which is not part of the demo; choose an empty folder, or one that does not exist yet.");
  }
  RequireMark_();
}

bool DemoFolder::IsOurs_(const fs::directory_entry& entry) const {
  const std::string name = entry.path().lexically_relative(folder_).generic_string();
  if (entry.is_symlink()) return false;
  if (entry.is_directory()) return subfolders_.count(name) != 0;
  // A run that was killed may have left one that is not complete.
  return entry.is_regular_file() && std::any_of(names_.begin(), names_.end(), [&](const std::string& ours) {
           return name == ours || name == exc::UnfinishedFile::PartNameOf(ours);
         });
}

// A show of somebody's own may well use names of ours.
void DemoFolder::RequireMark_() const {
  std::ifstream show(folder_ / kShowName);
  std::string firstLine;
  std::getline(show, firstLine);
  if (firstLine.starts_with(mark_)) return;
  throw DemoError(folder_.string() +
                  ": holds a show that was not written by \"orbel demo\"; choose an empty folder, or one "
                  "that does not exist yet.");
}

}  // namespace orbel::host::demo
