#include "suite/utility/listdir.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "suite/utility/format.h"

namespace exc {

std::vector<std::string> listdir(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  std::filesystem::directory_iterator entry(folder, error);
  const std::filesystem::directory_iterator end;
  while (!error && entry != end) {
    names.push_back(entry->path().filename().string());
    entry.increment(error);
  }
  if (error) {
    throw ListdirError(format("Unable to list folder \"%s\": %s", folder.c_str(), error.message().c_str()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace exc
