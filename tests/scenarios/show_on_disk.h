#pragma once

#include <filesystem>
#include <vector>

#include "tests/scenarios/song_plan.h"

namespace scenarios {

// A show folder with real files, gone again with this object: song i has number i + 1. The audio is 24-bit
// WAV in which every frame holds its own index.
class ShowOnDisk {
 public:
  ShowOnDisk(const std::vector<SongPlan>& songs, unsigned rate);
  ~ShowOnDisk();
  ShowOnDisk(const ShowOnDisk&) = delete;
  ShowOnDisk& operator=(const ShowOnDisk&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace scenarios
