#pragma once

#include <functional>
#include <memory>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/output/output_settings.h"

namespace tesk_audio {

// Opens a device; can be asked again when that one has failed. Throws TESKAudioError. May block for as long
// as the sound system hangs.
using DeviceSource = std::function<std::unique_ptr<Device>()>;

// For the device that `settings` name, which takes frames of this rate and channel count.
DeviceSource MakeDeviceSource(const OutputSettings& settings, double rateHz, unsigned channels);

}  // namespace tesk_audio
