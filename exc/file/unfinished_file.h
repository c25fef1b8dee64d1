#pragma once

#include <string>

namespace exc {

// A file on its way to its name. Until Commit it is called as PartNameOf says, and it is locked (where the
// file system has locks), so that of two who write one name at once the second is refused. What a program
// that was killed has left under the part's name is written over. What none of ours can have left there is
// refused and stays as it is: a link, a pipe, a device, a folder, a file that has another name too.
//
// Errors     UnfinishedFileError.
// Threads    one at a time.
class UnfinishedFile {
 public:
  // A link stays a link: the file is the one that it leads to.
  explicit UnfinishedFile(const std::string& path);
  // Removes what was not committed.
  ~UnfinishedFile();
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

  // For reading and writing; empty at first.
  int GetDescriptor() const { return file_; }
  // To the disk, and then to its name, in the place of what is there. Nothing may be written afterwards.
  void Commit();

  // `path`.part, cut to what a name can have.
  static std::string PartNameOf(const std::string& path);

 private:
  const std::string path_;  // without links
  const std::string partPath_;
  int file_;
};

}  // namespace exc
