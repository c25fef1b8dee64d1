#pragma once

#include <stdexcept>
#include <string>

namespace exc {

// Why an UnfinishedFile cannot be written; the text does not name the file.
class UnfinishedFileError : public std::runtime_error {
 public:
  // `code`: the system's, and the text is its reason. 0: the text says by itself what to do.
  UnfinishedFileError(const std::string& text, int code) : std::runtime_error(text), code_(code) {}
  int GetCode() const { return code_; }

 private:
  int code_;
};

}  // namespace exc
