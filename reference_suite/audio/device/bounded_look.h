#pragma once

#include <functional>
#include <string>
#include <vector>

#include "reference_suite/audio/device/list_devices.h"

namespace tesk_audio {

// The looks of list_devices.h on threads of their own, which a sound system that hangs may hold for ever:
// after a moment `say` is told what is waited for (it may be empty), and after three seconds it counts as not
// answering. Threads: ANY.
using SayWaiting = std::function<void(const std::string& message)>;
DeviceInfo LookAtJackInTime(const std::string& server, const SayWaiting& say);
std::vector<DeviceInfo> LookAtDesktopInTime(const SayWaiting& say);

}  // namespace tesk_audio
