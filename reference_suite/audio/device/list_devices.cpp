#include "reference_suite/audio/device/list_devices.h"

#include "reference_suite/audio/device/jack_client.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

DeviceInfo LookAtJack(const std::string& server) {
  DeviceInfo info;
  info.kind = DeviceKind::Jack;
  try {
    const JackClient client(server);
    info.name = client.GetServer();
    info.answers = true;
    info.rateHz = client.GetRateHz();
    info.periodFrames = client.GetPeriodFrames();
    info.outputs = static_cast<unsigned>(client.GetPhysicalInputs().size());
  } catch (const TESKAudioError& error) {
    info.name = server;
    info.problem = error.what();
  }
  return info;
}

}  // namespace tesk_audio
