#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace host_tests {

// The program in a terminal of its own, in which a test can type. `kind` is what TERM says of it.
class OrbelInATerminal {
 public:
  explicit OrbelInATerminal(const std::vector<std::string>& arguments, const char* kind = "xterm");
  ~OrbelInATerminal();
  OrbelInATerminal(const OrbelInATerminal&) = delete;
  OrbelInATerminal& operator=(const OrbelInATerminal&) = delete;

  void Type(const std::string& keys) const;
  // Whether the terminal shows `text` from now on; waits up to a minute for it. What came before is not
  // looked at again.
  bool Shows(const std::string& text);
  // The same of a regular expression: what lasts only a moment, like a beat of a song, is never waited for by
  // itself, because the program may have no turn in that moment.
  bool ShowsLike(const std::string& pattern);
  // From here on only what the program writes now: nobody has read the terminal since the last of these
  // calls.
  void PassOver();
  // Whether the terminal echoes and waits for whole lines, as it did before the program.
  bool IsAsBefore() const;
  void CloseTerminal();
  // Exit status; -1 when a signal ended it.
  int WaitForEnd();
  pid_t GetProcess() const { return process_; }
  const std::string& GetScreen() const { return screen_; }

 private:
  // Until `find` returns where what is looked for ends on the screen.
  bool ShowsWhat_(const std::function<std::size_t()>& find);
  // Whether there was anything to read, for which it waits so long.
  bool Read_(int milliseconds = 20);

  pid_t process_ = -1;
  int terminal_ = -1;
  int keptOpen_ = -1;
  std::string screen_;
  std::size_t seen_ = 0;
};

}  // namespace host_tests
