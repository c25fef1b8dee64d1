#include "host/session/overwriting.h"

#include <filesystem>
#include <string>

#include "exc/file/unfinished_file.h"
#include "host/session/failure.h"
#include "host/session/render.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

namespace fs = std::filesystem;

// The one name that every way of writing a path comes to, links followed.
fs::path Resolved(const std::string& path) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error);
  const fs::path resolved = fs::weakly_canonical(absolute, error);
  return error ? absolute : resolved;
}

bool IsPartOfShow(const fs::path& file, const fs::path& show) {
  const fs::path folder = file.parent_path();
  return file == show / "show.toml" || folder == show / "songs" || folder == show / "data";
}

// How `file` is called until it is complete.
fs::path PartOf(const fs::path& file) {
  return exc::UnfinishedFile::PartNameOf(file.string());
}

void RequireFreeName(const std::string& path, const RenderOptions& options) {
  if (path.empty()) return;
  const fs::path file = Resolved(path);
  if (IsPartOfShow(file, Resolved(options.showPath))) {
    throw Failure(Shown(path) + ": is a place of the show itself; choose a name outside of it", kUsage);
  }
  if (options.scriptPath.empty()) return;
  const fs::path script = Resolved(options.scriptPath);
  if (file == script) {
    throw Failure(Shown(path) + ": is the script, and would be written over; choose another name", kUsage);
  }
  if (PartOf(file) == script) {
    throw Failure(Shown(path) + ": is called as the script is until it is complete; choose another name",
                  kUsage);
  }
}

}  // namespace

void RequireNothingIsOverwritten(const RenderOptions& options) {
  RequireFreeName(options.outPath, options);
  RequireFreeName(options.tracePath, options);
  if (options.tracePath.empty()) return;
  const fs::path sound = Resolved(options.outPath);
  const fs::path trace = Resolved(options.tracePath);
  if (sound == trace) {
    throw Failure(
        Shown(options.tracePath) + ": sound and trace cannot be one file; give --trace another name", kUsage);
  }
  if (PartOf(sound) == trace || PartOf(trace) == sound || PartOf(sound) == PartOf(trace)) {
    throw Failure(Shown(options.tracePath) +
                      ": sound or trace is called so until it is complete; give --trace another name",
                  kUsage);
  }
}

}  // namespace orbel::host
