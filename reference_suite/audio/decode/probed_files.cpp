#include "reference_suite/audio/decode/probed_files.h"

namespace tesk_audio {

namespace {

// More files than any show has.
constexpr std::size_t kMostFiles = 10'000;
constexpr time_t kSettledSeconds = 2;

}  // namespace

ProbedFiles& ProbedFiles::Instance() {
  static ProbedFiles files;
  return files;
}

ProbedFiles::Key ProbedFiles::KeyOf(const struct stat& file) {
  return {file.st_dev, file.st_ino, file.st_size, file.st_ctim.tv_sec, file.st_ctim.tv_nsec};
}

std::optional<AudioFileInfo> ProbedFiles::Find(const struct stat& file) const {
  const std::lock_guard lock(mutex_);
  const auto found = known_.find(KeyOf(file));
  if (found == known_.end()) return std::nullopt;
  return found->second;
}

void ProbedFiles::Keep(const struct stat& file, const AudioFileInfo& info, const timespec& now) {
  if (now.tv_sec - file.st_ctim.tv_sec < kSettledSeconds) return;
  const std::lock_guard lock(mutex_);
  if (known_.size() >= kMostFiles) known_.clear();
  known_.insert_or_assign(KeyOf(file), info);
}

}  // namespace tesk_audio
