#include "reference_suite/audio/device/jack_links.h"

#include <algorithm>
#include <numeric>
#include <regex>

#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

// A server that goes down takes the links away first. What is gone for longer while the server lives was
// taken away on purpose.
constexpr double kPurposeSeconds = 1.0;
// A server that is started again may have its ports a moment later, and connect later still.
constexpr double kReturnSeconds = 3.0;

std::regex Compile(const std::string& pattern) {
  try {
    return std::regex(pattern, std::regex::extended);
  } catch (const std::regex_error&) {
    throw TESKAudioError("\"" + pattern +
                         "\" is no regular expression for port names. For all inputs of a program give its "
                         "name and \":.*\".");
  }
}

std::vector<unsigned> OutputsOf(const JackWishes& wishes) {
  if (!wishes.outputs.empty()) return wishes.outputs;
  std::vector<unsigned> outputs(std::max(2U, wishes.channels));
  std::iota(outputs.begin(), outputs.end(), 1U);
  return outputs;
}

}  // namespace

void RequirePatterns(const std::vector<std::string>& patterns) {
  for (const std::string& pattern : patterns) Compile(pattern);
}

void JackLinks::Reopen() {
  const std::lock_guard lock(mutex_);
  known_.clear();
  lost_.clear();
  taken_.clear();
  gone_.clear();
  missing_.clear();
  firstLook_.reset();
}

void JackLinks::Renew(const std::string& input) {
  const std::lock_guard lock(mutex_);
  known_.erase(input);
}

std::set<JackLink> JackLinks::Observe(const std::set<JackLink>& connected,
                                      const std::vector<std::string>& inputs,
                                      const std::vector<std::string>& physical, double seconds) {
  const std::lock_guard lock(mutex_);
  const std::set<std::string> present(inputs.begin(), inputs.end());
  if (!firstLook_) firstLook_ = seconds;
  ForgetLost_(connected, present, seconds);
  remembered_.insert(connected.begin(), connected.end());
  AddWished_(inputs, physical);
  NoteMissing_(connected, seconds);
  std::set<JackLink> due;
  for (const JackLink& link : remembered_) {
    const bool appeared = present.contains(link.second) && !known_.contains(link.second);
    if (appeared && !connected.contains(link)) due.insert(link);
  }
  known_ = present;
  return due;
}

std::set<JackLink> JackLinks::GetRemembered() const {
  const std::lock_guard lock(mutex_);
  return remembered_;
}

std::set<JackLink> JackLinks::GetMissing() const {
  const std::lock_guard lock(mutex_);
  return missing_;
}

std::set<unsigned> JackLinks::GetWantedChannels() const {
  const std::lock_guard lock(mutex_);
  std::set<unsigned> channels;
  for (const std::set<JackLink>* const links : {&remembered_, &taken_}) {
    for (const JackLink& link : *links) channels.insert(link.first);
  }
  return channels;
}

void JackLinks::ForgetLost_(const std::set<JackLink>& connected, const std::set<std::string>& present,
                            double seconds) {
  std::map<JackLink, double> lost;
  for (const JackLink& link : remembered_) {
    const bool couldBe = present.contains(link.second) && known_.contains(link.second);
    if (!couldBe || connected.contains(link)) continue;
    const auto before = lost_.find(link);
    lost[link] = before == lost_.end() ? seconds : before->second;
  }
  lost_ = lost;
  for (const auto& [link, since] : lost) {
    if (seconds - since < kPurposeSeconds) continue;
    remembered_.erase(link);
    taken_.insert(link);
  }
}

void JackLinks::NoteMissing_(const std::set<JackLink>& connected, double seconds) {
  std::map<JackLink, double> gone;
  missing_.clear();
  for (const std::set<JackLink>* const links : {&remembered_, &taken_}) {
    for (const JackLink& link : *links) {
      if (connected.contains(link)) continue;
      const auto before = gone_.find(link);
      const double since = before == gone_.end() ? seconds : before->second;
      gone[link] = since;
      const double patience = since > *firstLook_ ? kPurposeSeconds : kReturnSeconds;
      if (seconds - since >= patience) missing_.insert(link);
    }
  }
  gone_.swap(gone);
}

void JackLinks::AddWished_(const std::vector<std::string>& inputs, const std::vector<std::string>& physical) {
  if (wishes_.patterns.empty()) {
    const std::vector<unsigned> outputs = OutputsOf(wishes_);
    for (std::size_t i = 0; i < outputs.size(); ++i) {
      if (outputs[i] < 1 || outputs[i] > physical.size()) continue;
      // Where one has gone the others move up: a number means what it meant first.
      const std::string& name = chosen_.try_emplace(outputs[i], physical[outputs[i] - 1]).first->second;
      AddLink_({static_cast<unsigned>(i % wishes_.channels), name});
    }
    return;
  }
  for (const std::string& pattern : wishes_.patterns) AddMatching_(pattern, inputs);
}

// Where a port goes, or is called something else, those behind it go on with what they hear; and what was
// one port too many once does not step in when a program takes its ports away one after the other.
void JackLinks::AddMatching_(const std::string& pattern, const std::vector<std::string>& inputs) {
  const std::regex compiled = Compile(pattern);
  std::map<std::string, unsigned>& channels = matched_[pattern];
  std::set<unsigned> taken;
  for (const std::string& name : inputs) {
    const auto before = channels.find(name);
    if (before != channels.end()) taken.insert(before->second);
  }
  for (const std::string& name : inputs) {
    if (!std::regex_match(name, compiled)) continue;
    unsigned free = 0;
    while (free < wishes_.channels && taken.contains(free)) ++free;
    const unsigned channel = channels.try_emplace(name, free).first->second;
    taken.insert(channel);
    if (channel < wishes_.channels) AddLink_({channel, name});
  }
}

// Due although its port may have been there for long.
void JackLinks::AddLink_(const JackLink& link) {
  if (!granted_.insert(link).second) return;
  remembered_.insert(link);
  known_.erase(link.second);
}

}  // namespace tesk_audio
