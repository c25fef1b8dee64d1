// The factory stands alone in its object, so that a program can put another in its place.
#include <memory>

#include "reference_suite/audio/device/open_device.h"
#include "reference_suite/audio/output/format_fit.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "reference_suite/audio/output/offline_sample_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "suite/audio/create.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

AudioSampleOutput* CreateAudioSampleOutput(const AudioSampleContent& content,
                                           AudioPlayerOutputInterface& player) {
  const OutputSettings settings = GetOutputSettings();
  const double rateHz = settings.rateHz > 0.0 ? settings.rateHz : content.GetSampleRateHz();
  const unsigned channels = content.GetChannelCount();
  std::string errorText;
  if (!FormatFits(content, rateHz, channels, &errorText)) throw TESKAudioError(errorText);
  if (settings.device == DeviceKind::Offline) {
    return std::make_unique<OfflineSampleOutput>(player, rateHz, channels, settings).release();
  }
  return std::make_unique<LiveSampleOutput>(player, MakeDeviceSource(settings, rateHz, channels)(), settings)
      .release();
}

}  // namespace tesk_audio
