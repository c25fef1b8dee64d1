#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace test_support {

// A JACK server of the test's own, without hardware, under a name that no other process has. One at a time.
// Ended with this object, by its process and never by its name.
class JackServer {
 public:
  struct Shape {
    unsigned rateHz = 48000;
    unsigned periodFrames = 256;
    unsigned outputs = 2;  // physical ones
    unsigned priority =
        0;  // of the server's real-time thread, its clients' being five lower; 0: no real time
  };

  // `name`: empty for NewName. Fails the test when the server does not come up.
  explicit JackServer(const Shape& shape, std::string name = "");
  JackServer() : JackServer(Shape{}) {}
  ~JackServer();
  JackServer(const JackServer&) = delete;
  JackServer& operator=(const JackServer&) = delete;

  const std::string& GetName() const { return name_; }
  void Signal(int signal) const;
  // Ends it with that signal; returns when it has gone.
  void End(int signal);
  // The one of this process, on which no server runs but those of this class.
  static std::string NewName();

 private:
  std::vector<std::string> WordsFor_(const Shape& shape) const;
  void Start_(const char* const* arguments);
  static void Run_(const char* const* arguments);

  std::string name_;
  pid_t process_ = -1;
};

}  // namespace test_support
