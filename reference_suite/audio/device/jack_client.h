#pragma once

#include <jack/jack.h>
#include <jack/thread.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tesk_audio {

// A connection to a JACK server. Never starts a server, and prints nothing: what libjack says goes into
// JackMessages. One at a time: opening waits until the one before is closed.
//
// Threads    ANY but the server's notifications; everything may block while the server hangs.
class JackClient {
 public:
  // `server`: empty for the one that the environment names, as a rule "default". Throws TESKAudioError.
  explicit JackClient(const std::string& server);
  ~JackClient();
  JackClient(const JackClient&) = delete;
  JackClient& operator=(const JackClient&) = delete;

  jack_client_t* Get() const { return client_; }
  std::string GetName() const { return ::jack_get_client_name(client_); }
  const std::string& GetServer() const { return server_; }
  double GetRateHz() const { return ::jack_get_sample_rate(client_); }
  unsigned GetPeriodFrames() const { return ::jack_get_buffer_size(client_); }
  bool IsRealTime() const { return ::jack_is_realtime(client_) != 0; }
  // Of the thread on which it asks for frames; 0: the server has no real time.
  int GetRealTimePriority() const { return std::max(0, ::jack_client_real_time_priority(client_)); }

  // Names of audio ports into which frames can be sent, in the server's order.
  std::vector<std::string> GetInputs() const;
  // Only those that lead out of the machine.
  std::vector<std::string> GetPhysicalInputs() const;

 private:
  std::vector<std::string> GetPorts_(unsigned long flags) const;

  std::string server_;
  jack_client_t* client_ = nullptr;
};

// Our name on that server: never the server's own. Server and client of one name share a socket, which the
// client takes away from everybody when it leaves.
std::string JackClientNameFor(const std::string& server);

// What libjack would have printed: the last lines, oldest first. Threads: ANY.
std::vector<std::string> TakeJackMessages();

}  // namespace tesk_audio
