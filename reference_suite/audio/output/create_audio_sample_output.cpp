// The factory stands alone in its object, so that a program can put another in its place.
#include <memory>

#include "reference_suite/audio/device/open_device.h"
#include "reference_suite/audio/device/resilient_device.h"
#include "reference_suite/audio/output/format_fit.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "reference_suite/audio/output/offline_sample_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "suite/audio/create.h"
#include "suite/audio/errors.h"
#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"

namespace tesk_audio {

namespace {

void TellListeners(const notify::DeviceUpdate& update) {
  notify::DeviceUpdate copy = update;
  notify::callbackDispatcher.Notify(notify::names::audio_device_changed, &copy);
}

// A clock cannot fail, and a file that has failed is not begun anew; for everything else a clock stands in
// when it does.
std::unique_ptr<Device> MakeDevice(const OutputSettings& settings, double rateHz, unsigned channels) {
  const DeviceSource source = MakeDeviceSource(settings, rateHz, channels);
  if (settings.device == DeviceKind::Null || settings.device == DeviceKind::File) return source();
  const ResilientDevice::Shape shape{rateHz, channels, settings.periodFrames};
  return std::make_unique<ResilientDevice>(shape, source, &TellListeners);
}

}  // namespace

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
  auto output = std::make_unique<LiveSampleOutput>(player, MakeDevice(settings, rateHz, channels), settings);
  output->TellMeters();
  return output.release();
}

}  // namespace tesk_audio
