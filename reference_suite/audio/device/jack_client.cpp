#include "reference_suite/audio/device/jack_client.h"

#include <cstdlib>
#include <deque>
#include <mutex>
#include <new>
#include <semaphore>

#include "reference_suite/audio/device/uncancelled.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

constexpr std::size_t kKeptMessages = 64;

struct Messages {
  std::mutex mutex;
  std::deque<std::string> lines;
};

// Never taken down: a client that hangs may be closed, and libjack talk about it, when the program has ended.
Messages& TheMessages() {
  static Messages& messages = *new Messages;
  return messages;
}

// On whatever thread the library has something to say.
void Keep(const char* line) {
  RunUncancelled([line]() noexcept {
    try {
      Messages& messages = TheMessages();
      const std::lock_guard lock(messages.mutex);
      if (messages.lines.size() == kKeptMessages) messages.lines.pop_front();
      messages.lines.emplace_back(line);
    } catch (const std::bad_alloc&) {
      // Nobody can be told that nobody is told.
    }
  });
}

// An attempt to open that fails takes memory away which a client of a server that has died still uses, and
// the program with it.
std::binary_semaphore& TheOnlyClient() {
  static std::binary_semaphore semaphore(1);
  return semaphore;
}

// And what to do.
std::string WhyItRefuses(jack_status_t status) {
  if ((status & JackVersionError) != 0) {
    return "is of another version than the JACK library here. Install both from the same source.";
  }
  if ((status & JackShmFailure) != 0) {
    return "cannot share memory with this program. Run both as the same user, and make room in /dev/shm.";
  }
  if ((status & (JackServerError | JackClientZombie)) != 0) {
    return "does not answer a new client to the end, as one that has just been stopped or is about to end. "
           "If it stays so, start it again, or choose another output.";
  }
  return "takes no further client (status " + std::to_string(status) +
         "). Close other programs that play to it, start it again, or choose another output.";
}

std::string NameOfDefaultServer() {
  const char* const name = std::getenv("JACK_DEFAULT_SERVER");
  return name != nullptr && *name != '\0' ? name : "default";
}

}  // namespace

JackClient::JackClient(const std::string& server) : server_(server.empty() ? NameOfDefaultServer() : server) {
  TheOnlyClient().acquire();
  ::jack_set_error_function(&Keep);
  ::jack_set_info_function(&Keep);
  const auto options = static_cast<jack_options_t>(JackNoStartServer | JackServerName);
  jack_status_t status{};
  client_ = ::jack_client_open(JackClientNameFor(server_).c_str(), options, &status, server_.c_str());
  if (client_ != nullptr) return;
  TheOnlyClient().release();
  if ((status & JackServerFailed) != 0) {
    throw TESKAudioError("No JACK server \"" + server_ +
                         "\" answers. Start it, or choose another output; \"orbel devices\" lists them.");
  }
  throw TESKAudioError("The JACK server \"" + server_ + "\" " + WhyItRefuses(status));
}

JackClient::~JackClient() {
  ::jack_client_close(client_);
  TheOnlyClient().release();
}

std::vector<std::string> JackClient::GetInputs() const {
  return GetPorts_(JackPortIsInput);
}

std::vector<std::string> JackClient::GetPhysicalInputs() const {
  return GetPorts_(JackPortIsInput | JackPortIsPhysical);
}

std::vector<std::string> JackClient::GetPorts_(unsigned long flags) const {
  std::vector<std::string> names;
  const char** const ports = ::jack_get_ports(client_, nullptr, JACK_DEFAULT_AUDIO_TYPE, flags);
  for (const char** port = ports; port != nullptr && *port != nullptr; ++port) names.emplace_back(*port);
  if (ports != nullptr) ::jack_free(ports);
  return names;
}

std::string JackClientNameFor(const std::string& server) {
  return server == "orbel" ? "orbel-player" : "orbel";
}

std::vector<std::string> TakeJackMessages() {
  Messages& messages = TheMessages();
  const std::lock_guard lock(messages.mutex);
  std::vector<std::string> taken(messages.lines.begin(), messages.lines.end());
  messages.lines.clear();
  return taken;
}

}  // namespace tesk_audio
