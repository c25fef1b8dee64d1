#pragma once

#include <memory>
#include <string>

#include "exc/file/unfinished_file.h"

namespace tesk_audio {

// A file that has its name when it is complete (exc::UnfinishedFile) and is read and written meanwhile. The
// first failure is kept, and every later write fails. Threads    one at a time.
class PartFile {
 public:
  // Throws SoundFileError.
  explicit PartFile(const std::string& path);
  // Bytes written or read; less than `count` on a failure or at the end.
  long long Write(const void* bytes, long long count);
  long long Read(void* bytes, long long count);
  // As lseek; -1 on a failure.
  long long Seek(long long offset, int whence);
  long long GetLength() const;

  // Throws SoundFileError when anything has failed so far.
  void Check() const;
  // To the disk, and then to its name. Throws SoundFileError.
  void Commit();

 private:
  const std::string path_;
  const std::unique_ptr<exc::UnfinishedFile> file_;
  int error_ = 0;          // errno of the first failure
  long long missing_ = 0;  // bytes that could not be written then
};

}  // namespace tesk_audio
