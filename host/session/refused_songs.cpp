// Songs for which the system grants no thread to decode them on.
#include <algorithm>
#include <memory>

#include "Sources/file_loader/file_loader_thread.h"
#include "host/session/refusals.h"
#include "host/session/session.h"

namespace orbel::host {
namespace {

// Asks for the thread of a song's loader, and for nothing to be decoded on it: without a file it ends at
// once.
bool IsGrantedALoader(const std::string& song) {
  try {
    const std::unique_ptr<FileLoaderData> loader(StartFileLoaderThread(
        song, "", "", [](FileLoaderData*) {}, nullptr));
    loader->Join();
  } catch (const std::exception& error) {
    if (!IsRefusalOfTheMoment(error)) throw;
    return !IsRefusalOfAThread(error);
  }
  return true;
}

}  // namespace

// The system goes on refusing a thread, and a player's error does not say to which songs. Where it is some
// songs alone, `attempt` succeeds without them. False when that does not help: nobody is granted a thread, or
// it was not a song's.
bool Session::DoWithoutRefusedSongs_(const std::string& current, const std::function<void()>& attempt) {
  const std::set<std::string> refused = TakeOutRefusedSongs_(current);
  const auto putBack = [&] {
    for (const std::string& song : refused) leftOut_.erase(song);
  };
  if (refused.empty() || PlayableSongs_().empty()) {
    putBack();
    return false;
  }
  try {
    attempt();
  } catch (const std::exception& error) {
    putBack();
    if (!IsRefusalOfTheMoment(error)) throw;
    return false;
  }
  for (const std::string& song : folder_.GetData().GetRunningOrder()) {
    if (!refused.contains(song)) continue;
    LeaveOut_(song,
              "the system grants no thread to decode it on; close other programs and open the show again");
  }
  return true;
}

// Once a song is left out another stands in its place beside the current one, and may be refused as well.
std::set<std::string> Session::TakeOutRefusedSongs_(const std::string& current) {
  std::set<std::string> refused;
  std::set<std::string> granted;
  for (bool isAnyNew = true; isAnyNew;) {
    isAnyNew = false;
    for (const std::string& song : SongsDecodedOnTheWayTo_(current)) {
      if (granted.contains(song) || refused.contains(song)) continue;
      isAnyNew = true;
      const bool isGranted = IsGrantedALoader(song);
      (isGranted ? granted : refused).insert(song);
      if (!isGranted) leftOut_.insert(song);
    }
  }
  return refused;
}

// A fresh player begins with the first song and is then brought to `song`, or to the one behind it when that
// is left out; it stays at the first when `song` is empty.
std::vector<std::string> Session::SongsDecodedOnTheWayTo_(const std::string& song) const {
  std::vector<std::string> songs = SongsDecodedWith_("");
  const std::vector<std::string>& order = folder_.GetData().GetRunningOrder();
  const auto target = std::find_if(std::find(order.begin(), order.end(), song), order.end(),
                                   [this](const std::string& number) { return CanBePlayed_(number); });
  if (target == order.end()) return songs;
  const std::vector<std::string> there = SongsDecodedWith_(*target);
  songs.insert(songs.end(), there.begin(), there.end());
  return songs;
}

// `current`, or the song with which a player begins when it is empty, behind those around it.
std::vector<std::string> Session::SongsDecodedWith_(const std::string& current) const {
  const std::vector<std::string> playable = PlayableSongs_();
  std::string first = current;
  for (const auto& [number, file] : folder_.GetAudioFiles()) {
    if (first.empty() && CanBePlayed_(number)) first = number;
  }
  const auto at = std::find(playable.begin(), playable.end(), first);
  std::vector<std::string> songs;
  if (at == playable.end()) return songs;
  if (at + 1 != playable.end()) songs.push_back(*(at + 1));
  if (at != playable.begin()) songs.push_back(*(at - 1));
  songs.push_back(*at);
  return songs;
}

}  // namespace orbel::host
