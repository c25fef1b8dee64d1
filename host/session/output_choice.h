#pragma once

#include <string>

#include "host/session/device_setup.h"

namespace orbel::host {

// Decides for `output` ("auto", "jack", "desktop", "null" or "file") what is played to, and takes over the
// rate of the device unless one was asked for. "auto" takes the first device that answers; where no sound
// system does, it stays, and the first that does so later is taken, while a clock without sound stands in.
// Throws Failure for wrong wishes.
// `say` is told of what is waited for.
OutputChoice ChooseOutput(const std::string& output, OutputChoice wishes, const Say& say);

// Which of these would be used, and why, in one line.
std::string WhyThisOutput(const std::vector<DeviceLine>& devices);

}  // namespace orbel::host
