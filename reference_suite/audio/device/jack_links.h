#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tesk_audio {

// One of our ports (its channel, from 0) and the port of somebody else that hears it.
using JackLink = std::pair<unsigned, std::string>;

// Where the operator wants our ports to be heard.
struct JackWishes {
  unsigned channels = 2;
  // Physical outputs, from 1, as the server counts them when each is first seen: the first hears channel 1,
  // and so on, round and round when there are more of them than channels. Empty: in their order, and the
  // first two for a single channel.
  std::vector<unsigned> outputs = {};
  // Regular expressions for whole port names; the ports that match one hear the channels in the order in
  // which they are first seen. Empty: the physical outputs are taken.
  std::vector<std::string> patterns = {};
};

// Throws TESKAudioError for a pattern that is none, naming it.
void RequirePatterns(const std::vector<std::string>& patterns);

// Knows by name which ports are to hear ours, through restarts of the server and of other programs. Made from
// the wishes at first; from then on what somebody connects or disconnects by hand counts.
//
// Threads    ANY, each operation alone: a device that hangs can come back while its successor runs.
class JackLinks {
 public:
  explicit JackLinks(JackWishes wishes) : wishes_(std::move(wishes)) {}

  // The server is a new one: everything that is remembered is to be connected again as soon as it is there.
  void Reopen();
  // A port of that name is a new one, although there may have been another at the last look.
  void Renew(const std::string& input);

  // `connected`: the links that there are now; `inputs` and `physical`: the ports that there are now;
  // `seconds`: of any clock that only grows. Returns the links to make now.
  std::set<JackLink> Observe(const std::set<JackLink>& connected, const std::vector<std::string>& inputs,
                             const std::vector<std::string>& physical, double seconds);

  std::set<JackLink> GetRemembered() const;
  // Links that there ought to be, or that somebody has taken away on this server, and that there have not
  // been for a second; for three since the first look when they have not been there at all.
  std::set<JackLink> GetMissing() const;
  // Those with a link that is remembered, or that somebody has taken away on this server.
  std::set<unsigned> GetWantedChannels() const;
  bool HasPatterns() const { return !wishes_.patterns.empty(); }

 private:
  void AddWished_(const std::vector<std::string>& inputs, const std::vector<std::string>& physical);
  void AddMatching_(const std::string& pattern, const std::vector<std::string>& inputs);
  void AddLink_(const JackLink& link);
  void ForgetLost_(const std::set<JackLink>& connected, const std::set<std::string>& present, double seconds);
  void NoteMissing_(const std::set<JackLink>& connected, double seconds);

  const JackWishes wishes_;
  mutable std::mutex mutex_;                // guards everything below
  std::map<unsigned, std::string> chosen_;  // of the outputs wished for by number: what they were called
  // Of the ports that have matched a pattern: the channel that each hears; one too high: none.
  std::map<std::string, std::map<std::string, unsigned>> matched_;
  std::set<JackLink> granted_;  // made from the wishes once; whoever takes one away means it
  std::set<JackLink> remembered_;
  std::set<std::string> known_;      // ports that were there at the last look
  std::map<JackLink, double> lost_;  // since when
  std::set<JackLink> taken_;         // away on purpose, and not remembered any more
  std::map<JackLink, double> gone_;  // remembered or taken, and not there: since when
  std::optional<double> firstLook_;  // at this server
  std::set<JackLink> missing_;       // of these, since long enough
};

}  // namespace tesk_audio
