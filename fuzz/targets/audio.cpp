#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <sstream>
#include <vector>

#include "fuzz/targets/targets.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/create.h"
#include "suite/audio/errors.h"

namespace fuzz {
namespace {

// A file that no disk sees.
class FileInMemory {
 public:
  explicit FileInMemory(Bytes bytes) : file_(::memfd_create("song", MFD_CLOEXEC)) {
    const bool written =
        file_ >= 0 && ::write(file_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    if (!written) Fail("there is memory for the file");
  }
  ~FileInMemory() { ::close(file_); }
  FileInMemory(const FileInMemory&) = delete;
  FileInMemory& operator=(const FileInMemory&) = delete;

  std::string Path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

class SilentConsole {
 public:
  SilentConsole() : before_(std::cout.rdbuf(swallowed_.rdbuf())) {}
  ~SilentConsole() { std::cout.rdbuf(before_); }
  SilentConsole(const SilentConsole&) = delete;
  SilentConsole& operator=(const SilentConsole&) = delete;

 private:
  std::ostringstream swallowed_;
  std::streambuf* before_;
};

void CheckContent(const tesk_audio::AudioSampleContent& content) {
  Require(content.GetSampleCount() > 0, "content has frames");
  Require(content.GetChannelCount() > 0 && content.GetSampleRateHz() > 0.0, "content has a format");
  std::vector<float> frames(4096UL * content.GetChannelCount());
  for (long long start = 0; start < content.GetSampleCount();) {
    long long count = 4096;
    content.Read(start, &count, frames.data());
    Require(count > 0, "every frame can be read");
    for (std::size_t index = 0; index < static_cast<std::size_t>(count) * content.GetChannelCount();
         ++index) {
      Require(std::isfinite(frames[index]), "every sample is finite");
    }
    start += count;
  }
}

// False, when the file is refused.
bool Probes(const std::string& path, unsigned* channels) {
  try {
    *channels = tesk_audio::ProbeAudioFile(path).channels;
    return true;
  } catch (const tesk_audio::TESKAudioError& error) {
    Require(std::string(error.what()).starts_with(path + ": "), "a refusal names the file");
    return false;
  }
}

}  // namespace

void Audio(Bytes input) {
  const FileInMemory file(input);
  const SilentConsole console;
  unsigned channels = 0;
  const bool probes = Probes(file.Path(), &channels);
  // Every other length is resampled on the way.
  const std::string argument = input.size() % 2 == 0 ? "" : "rate=44100";
  try {
    const std::unique_ptr<tesk_audio::AudioSampleContent> content(
        tesk_audio::CreateAudioSampleContent(file.Path(), argument));
    Require(probes, "what can be decoded can be probed");
    Require(content->GetChannelCount() == channels, "probing tells the channels");
    CheckContent(*content);
  } catch (const tesk_audio::TESKAudioError& error) {
    Require(std::string(error.what()).starts_with(file.Path() + ": "), "a refusal names the file");
  }
}

}  // namespace fuzz
