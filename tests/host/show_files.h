#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host_tests {

// A show folder of a test's own, gone with this object. Its songs are in 4/4 at 240 quarter notes a minute,
// so that a bar lasts one second: bar N begins at second N - 1. The audio has 8,000 frames a second.
class ShowFiles {
 public:
  static constexpr unsigned kRate = 8000;

  ShowFiles();
  ~ShowFiles();
  ShowFiles(const ShowFiles&) = delete;
  ShowFiles& operator=(const ShowFiles&) = delete;

  // The show folder, and a path beside it for whatever a test writes.
  std::string Show() const { return (folder_ / "show").string(); }
  std::string Beside(const std::string& name) const { return (folder_ / name).string(); }

  // A song with its music, its audio (every frame of which tells its own index) and its cues.
  void AddSong(const std::string& number, const std::string& name, unsigned bars,
               const std::string& cues = "");
  void WriteMidi(const std::filesystem::path& path, unsigned bars) const;
  // `path` relative to the show folder.
  void Write(const std::string& path, const std::string& text) const;
  std::filesystem::path At(const std::string& path) const { return folder_ / "show" / path; }

 private:
  std::filesystem::path folder_;
};

// Frame n of the audio of every song, one channel: its index, counted from 1, in the 24 bits that a float
// holds.
float FrameValue(long long index);
// 32-bit float WAV.
void WriteWav(const std::filesystem::path& path, const std::vector<float>& samples, unsigned rate,
              unsigned channels = 1);
std::vector<float> FramesFromZero(long long count);

// The samples of a 32-bit float WAV; empty when it is none.
std::vector<float> ReadFloatWav(const std::string& path);
std::string ReadText(const std::string& path);

}  // namespace host_tests
