#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace tesk_audio {

// A regular file opened for decoding, read through a large buffer so that slow disks and network shares cost
// few requests. Anything else (folder, pipe, device, also behind a link) is refused before it is opened.
//
// Units      bytes.
// Threads    one at a time; each decoding has its own.
// Errors     TESKAudioError, naming the file, the system's reason and the cure.
class AudioFile {
 public:
  explicit AudioFile(const std::string& path);
  // The same file with a position and a buffer of its own, for another decoder of it. Shares what is open, so
  // that it reads the same file whatever the path has become; `opened` must outlive it and may be read
  // meanwhile.
  struct Again {};
  AudioFile(Again, const AudioFile& opened);
  ~AudioFile();
  AudioFile(const AudioFile&) = delete;
  AudioFile& operator=(const AudioFile&) = delete;

  // How the file is called in messages: printable, whatever bytes its name has.
  const std::string& Name() const { return name_; }
  long long Size() const { return size_; }
  long long Tell() const { return position_; }
  // False, and no move, for a position before the start.
  bool Seek(long long position);

  // Up to `count` bytes from the position on; fewer only at the end or when the system cannot read on. The
  // decoders' libraries cannot be passed an exception, so that failure is kept for ThrowIfReadFailed.
  std::size_t Read(void* buffer, std::size_t count);
  void ThrowIfReadFailed() const;

  // Up to `count` bytes from the very start, without moving the position.
  std::string Head(std::size_t count);

 private:
  bool FillBuffer_();

  std::string name_;
  int descriptor_ = -1;
  bool owns_ = true;   // the descriptor
  int readError_ = 0;  // errno of the read that failed
  long long size_ = 0;
  long long position_ = 0;
  // Whole from the start: the decoders' libraries cannot be passed the lack of memory either.
  std::unique_ptr<unsigned char[]> buffer_;
  long long bufferStart_ = 0;
  std::size_t bufferFill_ = 0;
  std::size_t lastCount_ = 0;  // asked for by the last read
};

}  // namespace tesk_audio
