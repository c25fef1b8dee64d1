#pragma once

#include <string>
#include <vector>

namespace sound_files {

// A folder of this test's own under the system's place for temporary files; removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string Path(const std::string& name) const { return path_ + "/" + name; }
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// Interleaved frames in which every sample says where it stands: channel c of frame i is (i + c * 1000) /
// 2^23, exact in 24 bits and in float.
std::vector<float> IndexCoded(long long frames, unsigned channels, long long first = 0);
// A sine with another pitch in each channel, at half of full scale.
std::vector<float> Sines(long long frames, unsigned channels, double rateHz);
// Noise at half of full scale, always the same: its pages of compressed audio last less than those of a sine.
std::vector<float> Noise(long long frames, unsigned channels, unsigned seed = 1);

// Writes `samples` in one of libsndfile's formats. Fails the test when that is not possible.
void Write(const std::string& path, int format, int rateHz, unsigned channels,
           const std::vector<float>& samples);

std::string Bytes(const std::string& path);
void WriteBytes(const std::string& path, const std::string& bytes);

// Where the pages of an Ogg file begin, and how long they are.
struct OggPage {
  std::size_t start;
  std::size_t length;
  long long granule;
};
std::vector<OggPage> OggPages(const std::string& bytes);

}  // namespace sound_files
