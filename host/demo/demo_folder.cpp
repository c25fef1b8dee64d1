#include "host/demo/demo_folder.h"

#include <fstream>
#include <system_error>
#include <utility>

#include "host/demo/written_file.h"

namespace orbel::host::demo {

namespace fs = std::filesystem;

namespace {

void MakeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw DemoError(folder.string() + ": not made as a folder (" + error.message() +
                    "); choose another place for the demo.");
  }
}

}  // namespace

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
  MakeFolder(folder_);
  for (const std::string& subfolder : subfolders_) MakeFolder(folder_ / subfolder);
}

void DemoFolder::Write(const std::string& name, const std::vector<std::uint8_t>& bytes) {
  WriteFile(folder_ / name, bytes);
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
  const std::string finalName =
      name.ends_with(kPartSuffix) ? name.substr(0, name.size() - kPartSuffix.size()) : name;
  return entry.is_regular_file() && names_.count(finalName) != 0;
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
