#pragma once

#include <cstddef>

namespace tesk_audio {

// Memory for samples, straight from the system: a song is tens of MiB, and taking those page by page costs as
// much time as decoding an uncompressed file. Pieces of kBytes begin where the system's large pages do, and
// ask for them.
//
// Units      bytes.
// Threads    one at a time.
// Errors     std::bad_alloc.
class SamplePages {
 public:
  SamplePages();
  ~SamplePages();
  SamplePages(const SamplePages&) = delete;
  SamplePages& operator=(const SamplePages&) = delete;

  float* Samples() const { return static_cast<float*>(start_); }
  // Gives back what lies behind the first `bytes`, as far as whole pages go. Nothing may be stored there any
  // more.
  void GiveBackBehind(std::size_t bytes);

  static constexpr std::size_t kBytes = std::size_t{2} << 20U;

 private:
  void* start_ = nullptr;
  std::size_t bytes_ = kBytes;
};

}  // namespace tesk_audio
