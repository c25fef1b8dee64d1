// Alone in its object, so that a program can put another in its place.
#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

#include "suite/audio/create.h"

namespace tesk_audio {

namespace {

// A thread costs as much as looking at a few files.
constexpr std::size_t kFilesWorthAThread = 8;
constexpr std::size_t kMostThreads = 4;

std::size_t HelpersFor(std::size_t files) {
  const std::size_t cores = std::min<std::size_t>(std::thread::hardware_concurrency(), kMostThreads);
  return std::min(files / kFilesWorthAThread, cores > 1 ? cores - 1 : 0);
}

void ProbeNext(const std::vector<std::string>& paths, std::atomic<std::size_t>* next) noexcept {
  for (std::size_t index = (*next)++; index < paths.size(); index = (*next)++) {
    try {
      ProbeAudioFile(paths[index]);
    } catch (const std::exception&) {
      // Whoever asks for it is told.
    }
  }
}

}  // namespace

void ProbeAudioFiles(const std::vector<std::string>& paths) {
  std::size_t left = HelpersFor(paths.size());
  if (left == 0) return;
  std::atomic<std::size_t> next{0};
  std::vector<std::thread> helpers;
  try {
    for (; left > 0; --left) {
      helpers.emplace_back([&paths, &next] { ProbeNext(paths, &next); });
    }
  } catch (const std::exception&) {
    // Without another thread, or memory for one, this one does it all.
  }
  ProbeNext(paths, &next);
  for (std::thread& helper : helpers) helper.join();
}

}  // namespace tesk_audio
