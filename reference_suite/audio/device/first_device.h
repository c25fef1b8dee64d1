#pragma once

#include "reference_suite/audio/device/open_device.h"

namespace tesk_audio {

// Opens the first of two that answers, and from then on that one alone: nobody expects the show in the
// loudspeaker of the laptop when the one that it was played to has failed.
//
// Threads    ANY, also several at once: while `first` hangs for one who asks, `second` answers the others.
DeviceSource FirstDeviceOf(DeviceSource first, DeviceSource second);

}  // namespace tesk_audio
