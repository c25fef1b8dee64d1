#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "reference_suite/audio/decode/audio_file.h"

namespace tesk_audio {

// A file read from its start to its end, with a look at the bytes ahead.
//
// Units      bytes.
// Threads    one at a time.
class ByteWindow {
 public:
  static constexpr std::size_t kAhead = 8192;  // that can be looked at from where it stands

  // Ends before `end`.
  ByteWindow(AudioFile& file, long long end);

  long long End() const { return end_; }
  // Nothing more can be read, at `position` or behind it: the file ends, or has failed.
  bool EndsBefore(long long position) const {
    return isAllRead_ && position >= from_ + static_cast<long long>(fill_);
  }
  // Never back.
  void GoTo(long long position);
  // `count` bytes, up to kAhead behind where it stands; null where they are not all there.
  const unsigned char* Bytes(long long position, std::size_t count) const;
  bool Has(long long position, std::string_view text) const;

 private:
  AudioFile& file_;
  const long long end_;
  std::vector<unsigned char> bytes_;
  long long from_ = 0;
  std::size_t fill_ = 0;
  bool isAllRead_ = false;
};

}  // namespace tesk_audio
