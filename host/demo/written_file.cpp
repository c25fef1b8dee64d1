#include "host/demo/written_file.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "exc/file/unfinished_file.h"
#include "exc/file/unfinished_file_error.h"
#include "host/demo/demo_error.h"

namespace orbel::host::demo {

namespace {

std::string CureOf(int code) {
  if (code == ENOSPC || code == EDQUOT) return "make room on the disk and write the demo again";
  return "see that the folder may be written, or choose another one";
}

[[noreturn]] void Fail(const std::filesystem::path& path, int code, const std::string& progress) {
  throw DemoError(path.string() + ": not written (" + std::generic_category().message(code) + progress +
                  "); " + CureOf(code) + ".");
}

void WriteAll(int file, const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = ::write(file, bytes.data() + written, bytes.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      Fail(path, errno,
           ", " + std::to_string(bytes.size() - written) + " of " + std::to_string(bytes.size()) +
               " bytes are missing");
    }
    written += static_cast<std::size_t>(count);
  }
}

}  // namespace

void WriteFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
  try {
    exc::UnfinishedFile file(path);
    WriteAll(file.GetDescriptor(), path, bytes);
    file.Commit();
  } catch (const exc::UnfinishedFileError& error) {
    if (error.GetCode() != 0) Fail(path, error.GetCode(), "");
    throw DemoError(path.string() + ": not written: " + error.what() + ".");
  }
}

}  // namespace orbel::host::demo
