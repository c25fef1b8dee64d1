#include "suite/utility/listdir.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>

#include "suite/utility/format.h"

namespace exc {
namespace {

[[noreturn]] void Refuse(const std::string& folder) {
  const int reason = errno;
  const std::string words = std::generic_category().message(reason);
  throw ListdirError(format("Unable to list folder \"%s\": %s", folder.c_str(), words.c_str()), reason);
}

struct Closer {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

}  // namespace

// Not with the standard library's iterator, which ends the process when memory runs out.
std::vector<std::string> listdir(const std::string& folder) {
  const std::unique_ptr<DIR, Closer> open(::opendir(folder.c_str()));
  if (open == nullptr) Refuse(folder);
  std::vector<std::string> names;
  while (true) {
    errno = 0;  // the end is told from a failure by nothing else
    const dirent* const entry = ::readdir(open.get());
    if (entry == nullptr) break;
    const std::string name = entry->d_name;
    if (name.front() != '.') names.push_back(name);
  }
  if (errno != 0) Refuse(folder);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace exc
