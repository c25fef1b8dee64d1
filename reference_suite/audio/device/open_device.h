#pragma once

#include <memory>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/output/output_settings.h"

namespace tesk_audio {

// Opens the device that `settings` name, for frames of this rate and channel count. Throws TESKAudioError.
std::unique_ptr<Device> OpenDevice(const OutputSettings& settings, double rateHz, unsigned channels);

}  // namespace tesk_audio
