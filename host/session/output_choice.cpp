#include "host/session/output_choice.h"

#include <algorithm>

#include "host/session/failure.h"

namespace orbel::host {

OutputChoice ChooseOutput(const std::string& output, OutputChoice wishes, const Say& say) {
  RequirePortPatterns(wishes.connect);
  wishes.output = output;
  if (output == "file" && wishes.device.empty()) {
    throw Failure("--output file needs the name of the file: --device FILE", kUsage);
  }
  if (output == "null" && !wishes.device.empty()) {
    throw Failure("--output null is a clock and has no devices: leave --device out, or choose another output",
                  kUsage);
  }
  if (output == "null" || output == "file") return wishes;
  const std::vector<DeviceLine> devices = LookAtDevices(wishes.device, say);
  if (output == "auto") {
    const auto first = std::find_if(devices.begin(), devices.end(), [](const DeviceLine& line) {
      return line.answers && line.output != "null" && line.output != "file";
    });
    if (first == devices.end()) return wishes;
    wishes.output = first->output;
  }
  const auto chosen = std::find_if(devices.begin(), devices.end(),
                                   [&](const DeviceLine& line) { return line.output == wishes.output; });
  if (chosen->answers && chosen->rateHz > 0.0 && wishes.rateHz == 0.0) wishes.rateHz = chosen->rateHz;
  return wishes;
}

std::string WhyThisOutput(const std::vector<DeviceLine>& devices) {
  const auto chosen =
      std::find_if(devices.begin(), devices.end(), [](const DeviceLine& line) { return line.answers; });
  if (chosen->output == "null") {
    return "play would use null: no sound system answers. It would look for JACK, PulseAudio and ALSA "
           "every second.";
  }
  return "play would use " + chosen->output + ": it is the first that answers.";
}

}  // namespace orbel::host
