#pragma once

#include <string>
#include <vector>

// The base of player wrappers without a show folder to read: its set-up makes the show data that a test asks
// for.
namespace fakes::player_wrapper {

void Reset();
// The songs of the show, in running order.
void SetSongs(const std::vector<std::string>& songs);
// Songs that the set-up finds to be broken, each with a problem of this text.
void LeaveOut(const std::string& song, const std::string& message);
// Set-up throws a std::runtime_error.
void FailSetUp(const std::string& text);
// Set-up makes no show data.
void WithholdShowData();

// What the last wrapper was given.
struct Seen {
  std::string showPath;
  std::string leaveOut;
  long versionTargetAtSetUp = 0;
};
Seen GetSeen();

}  // namespace fakes::player_wrapper
