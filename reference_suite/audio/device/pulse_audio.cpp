// PulseAudio, and what the library that speaks to it for us does not expect of it.
#include "reference_suite/audio/device/pulse_audio.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

namespace tesk_audio {

// What PulseAudio tells of itself, as its library lays it out.
struct PulseServerInfo {
  struct SampleSpec {
    int format;
    std::uint32_t rateHz;
    std::uint8_t channels;
  };
  struct ChannelMap {
    std::uint8_t channels;
    int places[32];
  };
  const char* userName;
  const char* hostName;
  const char* serverVersion;
  const char* serverName;
  SampleSpec sampleSpec;
  const char* outputName;  // null: there is none
  const char* inputName;   // likewise
  std::uint32_t cookie;
  ChannelMap channelMap;
};
using PulseServerInfoCallback = void (*)(void* context, const PulseServerInfo* info, void* argument);

namespace {

// Who has asked. Lives as long as what is asked is under way.
struct Asked {
  PulseServerInfoCallback callback;
  void* argument;
};

template <typename Function>
Function* NextCalled(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// On the sound system's thread.
void HandOn(void* context, const PulseServerInfo* info, void* argument) {
  const Asked& asked = *static_cast<const Asked*>(argument);
  PulseServerInfo whole = info != nullptr ? *info : PulseServerInfo{};
  if (whole.outputName == nullptr) whole.outputName = "";
  if (whole.inputName == nullptr) whole.inputName = "";
  asked.callback(context, &whole, asked.argument);
}

// Likewise; once, when it has been answered or cancelled.
void Forget(void* /*operation*/, void* argument) {
  delete static_cast<Asked*>(argument);
}

}  // namespace

// Asking a sound system that does not run could start it, or print on the terminal.
bool PulseAudioRuns() {
  if (std::getenv("PULSE_SERVER") != nullptr) return true;
  const char* const folder = std::getenv("XDG_RUNTIME_DIR");
  const std::string runtime = folder != nullptr ? folder : "/run/user/" + std::to_string(::getuid());
  return ::access((runtime + "/pulse/native").c_str(), F_OK) == 0;
}

}  // namespace tesk_audio

extern "C" void* pa_context_get_server_info(void* context, tesk_audio::PulseServerInfoCallback callback,
                                            void* argument);

// Found before PulseAudio's own, which it calls. A server without an output, without an input, or one that
// dies while it is asked has no names to tell, and our sound library takes them as they come: it would end
// the program with a signal, on the stage, when the only output is unplugged.
extern "C" void* pa_context_get_server_info(void* context, tesk_audio::PulseServerInfoCallback callback,
                                            void* argument) {
  using Get = void*(void*, tesk_audio::PulseServerInfoCallback, void*);
  using Notify = void(void*, void (*)(void*, void*), void*);
  static Get* const get = tesk_audio::NextCalled<Get>("pa_context_get_server_info");
  static Notify* const notify = tesk_audio::NextCalled<Notify>("pa_operation_set_state_callback");
  if (get == nullptr || notify == nullptr) return nullptr;
  // Nothing is thrown through the library's frames.
  std::unique_ptr<tesk_audio::Asked> asked(new (std::nothrow) tesk_audio::Asked{callback, argument});
  if (asked == nullptr) return nullptr;
  void* const operation = get(context, &tesk_audio::HandOn, asked.get());
  if (operation != nullptr) notify(operation, &tesk_audio::Forget, asked.release());
  return operation;
}
