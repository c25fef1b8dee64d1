// Alone in its object, so that a program can put another in its place.
#include "reference_suite/audio/device/open_device.h"

#include "reference_suite/audio/device/desktop_device.h"
#include "reference_suite/audio/device/file_device.h"
#include "reference_suite/audio/device/first_device.h"
#include "reference_suite/audio/device/jack_device.h"
#include "reference_suite/audio/device/null_device.h"

namespace tesk_audio {

DeviceSource MakeDeviceSource(const OutputSettings& settings, double rateHz, unsigned channels) {
  if (settings.device == DeviceKind::Any) {
    OutputSettings jack = settings;
    jack.device = DeviceKind::Jack;
    OutputSettings desktop = settings;
    desktop.device = DeviceKind::Desktop;
    return FirstDeviceOf(MakeDeviceSource(jack, rateHz, channels),
                         MakeDeviceSource(desktop, rateHz, channels));
  }
  if (settings.device == DeviceKind::Jack) {
    const auto links = std::make_shared<JackLinks>(JackWishes{channels, settings.outputs, settings.connect});
    return [=]() -> std::unique_ptr<Device> {
      return std::make_unique<JackDevice>(settings.deviceName, channels, links);
    };
  }
  if (settings.device == DeviceKind::Desktop) {
    const auto chosen = std::make_shared<DesktopDevice::Chosen>();
    return [=]() -> std::unique_ptr<Device> {
      return std::make_unique<DesktopDevice>(settings, rateHz, channels, chosen);
    };
  }
  if (settings.device == DeviceKind::File) {
    return [=] { return std::make_unique<FileDevice>(settings.deviceName, rateHz, channels); };
  }
  return [=] { return std::make_unique<NullDevice>(rateHz, channels, settings.periodFrames); };
}

}  // namespace tesk_audio
