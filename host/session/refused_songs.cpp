// Songs for which the system grants no thread to decode them on.
#include <algorithm>
#include <iterator>
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
  const std::set<std::string> refused = FindRefusedSongs_(current);
  if (refused.empty() || refused.size() == PlayableSongs_().size()) return false;
  const std::set<std::string> before = leftOut_;
  leftOut_.insert(refused.begin(), refused.end());
  try {
    attempt();
  } catch (const std::exception& error) {
    leftOut_ = before;
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

// A fresh player decodes its first song and those beside it, and is then brought to `current`, or to the one
// behind it when that is refused. Where a song is left out another stands in its place, and may be refused as
// well.
std::set<std::string> Session::FindRefusedSongs_(const std::string& current) const {
  const std::vector<std::string> order = PlayableSongs_();
  std::set<std::string> granted;
  std::set<std::string> refused;
  const auto isLeft = [&](const std::string& song) { return !refused.contains(song); };
  const auto ask = [&](const std::string& song) {
    if (granted.contains(song) || refused.contains(song)) return;
    (IsGrantedALoader(song) ? granted : refused).insert(song);
  };
  const auto askAround = [&](std::vector<std::string>::const_iterator at) {
    if (at == order.end()) return;
    const auto next = std::find_if(at + 1, order.end(), isLeft);
    const auto previous = std::find_if(std::make_reverse_iterator(at), order.rend(), isLeft);
    ask(*at);
    if (next != order.end()) ask(*next);
    if (previous != order.rend()) ask(*previous);
  };
  const auto wanted = std::find(order.begin(), order.end(), current);
  std::size_t known = 0;
  do {
    known = refused.size();
    askAround(std::find(order.begin(), order.end(), FirstSongBut_(refused)));
    askAround(std::find_if(wanted, order.end(), isLeft));
  } while (refused.size() > known);
  return refused;
}

// With which a player begins; empty when there is none.
std::string Session::FirstSongBut_(const std::set<std::string>& refused) const {
  for (const auto& [number, file] : folder_.GetAudioFiles()) {
    if (!refused.contains(number) && CanBePlayed_(number)) return number;
  }
  return "";
}

}  // namespace orbel::host
