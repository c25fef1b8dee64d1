#include "host/session/output_choice.h"

#include <algorithm>

#include "host/session/failure.h"
#include "host/session/shown_text.h"

namespace orbel::host {

namespace {

// What would be asked for in vain.
void RequireThatWishesFit(const std::string& output, const OutputChoice& wishes) {
  if (output == "file" && wishes.device.empty()) {
    throw Failure("--output file needs the name of the file: --device FILE", kUsage);
  }
  if (output == "file" && !NamesASoundFile(wishes.device)) {
    throw Failure(
        Shown(wishes.device) + ": the ending says what is written: end the name in .wav, .flac or .ogg",
        kUsage);
  }
  if (output == "null" && !wishes.device.empty()) {
    throw Failure("--output null is a clock and has no devices: leave --device out, or choose another output",
                  kUsage);
  }
  if ((output == "null" || output == "file") && !wishes.outputs.empty()) {
    throw Failure("--output " + output +
                      " has no outputs to choose among: leave --channels out, or choose another output",
                  kUsage);
  }
  if (output != "jack" && output != "auto" && !wishes.connect.empty()) {
    throw Failure(
        "--output " + output + " has no ports to connect: leave --connect out, or choose --output jack",
        kUsage);
  }
}

// Of several outputs of the desktop the one that is named, else the usual one, which comes first.
const DeviceLine& FindChosen(const std::vector<DeviceLine>& devices, const OutputChoice& wishes) {
  const auto isOfOutput = [&](const DeviceLine& line) { return line.output == wishes.output; };
  const auto named = std::find_if(devices.begin(), devices.end(), [&](const DeviceLine& line) {
    return isOfOutput(line) && line.name == wishes.device;
  });
  return named != devices.end() ? *named : *std::find_if(devices.begin(), devices.end(), isOfOutput);
}

}  // namespace

OutputChoice ChooseOutput(const std::string& output, OutputChoice wishes, const Say& say) {
  RequirePortPatterns(wishes.connect);
  RequireThatWishesFit(output, wishes);
  wishes.output = output;
  if (output == "null" || output == "file") return wishes;
  const std::vector<DeviceLine> devices = LookAtDevices(wishes.device, say);
  if (output == "auto") {
    const auto first = std::find_if(devices.begin(), devices.end(), [](const DeviceLine& line) {
      return line.answers && line.output != "null" && line.output != "file";
    });
    if (first == devices.end()) return wishes;
    wishes.output = first->output;
  }
  const DeviceLine& chosen = FindChosen(devices, wishes);
  if (chosen.answers && chosen.rateHz > 0.0 && wishes.rateHz == 0.0) wishes.rateHz = chosen.rateHz;
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
