#pragma once

#include <string>

namespace orbel::host {

// A pipe, a terminal or a device that takes what is written as it comes. It waits for room there as long as
// the reader takes, but not once an interrupt has come.
//
// Errors     Failure, naming the path; at an interrupt "interrupted: " and what is given for it.
// Threads    one at a time.
class RowStream {
 public:
  RowStream(const std::string& path, const std::string& ifInterrupted);
  ~RowStream();
  RowStream(const RowStream&) = delete;
  RowStream& operator=(const RowStream&) = delete;

  void Write(const std::string& text) const;

 private:
  void WaitForRoom_() const;

  const std::string path_;
  const std::string ifInterrupted_;
  const int file_;
};

}  // namespace orbel::host
