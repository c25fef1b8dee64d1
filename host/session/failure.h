#pragma once

#include <stdexcept>
#include <string>

namespace orbel::host {

// How the program ends.
enum ExitStatus : int {
  kDone = 0,
  kFailed = 1,       // while running; the message says which file, where, what to do
  kUsage = 2,        // wrong arguments
  kCannotEnd = 3,    // a vamp or a caesura that nothing leaves
  kFoundErrors = 5,  // by the check of a show
  kDeviceGone = 6,   // the audio device failed and stayed away
};

// Ends the program with a message and a status.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& message, ExitStatus status = kFailed)
      : std::runtime_error(message), status_(status) {}
  ExitStatus GetStatus() const { return status_; }

 private:
  ExitStatus status_;
};

// There is no player any more and none can be made: nobody can go on from here.
class PlayerLost : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace orbel::host
