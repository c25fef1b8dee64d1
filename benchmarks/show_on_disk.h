#pragma once

#include <memory>
#include <string>
#include <vector>

class AudioPlayerWrapper;

// Shows that the benchmarks play: written to a folder of their own, removed with it.
namespace orbel_benchmarks {

inline constexpr unsigned kRate = 48000;
inline constexpr unsigned kDivision = 480;
inline constexpr unsigned kTicksPerSecond = 960;  // at the 120 quarter notes a minute of these songs

struct SongOnDisk {
  std::string number = "1";
  unsigned seconds = 30;
  unsigned tempoEvents = 1;  // of two tempos in turn that differ by a microsecond, evenly spread
  unsigned cues = 0;         // safeties that nobody asks for: each ends a read and is passed
  std::string audio;         // a file to copy; empty: silence
};

class ShowOnDisk {
 public:
  ShowOnDisk();
  ~ShowOnDisk();
  ShowOnDisk(const ShowOnDisk&) = delete;
  ShowOnDisk& operator=(const ShowOnDisk&) = delete;

  void Add(const SongOnDisk& song);
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// Four minutes of stereo music, of a sort: two detuned tones with a beat over noise that differs in both
// channels, so that coders have as much to do as with a recording. Written once for each format and removed
// at the end of the program. `extension`: "ogg", "flac" or "wav".
std::string FourMinutes(const std::string& extension);

// The show, opened with the offline output.
std::unique_ptr<AudioPlayerWrapper> OpenOffline(const std::string& path);

// Sorted already: what `share` of the values do not exceed.
double Percentile(const std::vector<double>& sorted, double share);

}  // namespace orbel_benchmarks
