#include "reference_suite/audio/device/first_device.h"

#include <atomic>
#include <string>
#include <utility>

#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

enum class Found { None, First, Second };

struct Sources {
  DeviceSource first;
  DeviceSource second;
  std::atomic<bool> firstIsAsked{false};
  std::atomic<Found> found{Found::None};
};

// Asks the first, when nobody does so at present.
class AskingFirst {
 public:
  explicit AskingFirst(Sources& sources) : sources_(sources), mayAsk_(!sources.firstIsAsked.exchange(true)) {}
  ~AskingFirst() {
    if (mayAsk_) sources_.firstIsAsked = false;
  }
  AskingFirst(const AskingFirst&) = delete;
  AskingFirst& operator=(const AskingFirst&) = delete;

  // Null, and `problem` tells why, when it does not answer.
  std::unique_ptr<Device> Open(std::string* problem) {
    if (!mayAsk_) return nullptr;
    try {
      std::unique_ptr<Device> device = sources_.first();
      // Another may have been found while it hung.
      Found none = Found::None;
      sources_.found.compare_exchange_strong(none, Found::First);
      return device;
    } catch (const TESKAudioError& error) {
      *problem = std::string(error.what()) + " ";
      return nullptr;
    }
  }

 private:
  Sources& sources_;
  const bool mayAsk_;
};

std::unique_ptr<Device> OpenAny(Sources& sources) {
  std::string problem;
  if (std::unique_ptr<Device> device = AskingFirst(sources).Open(&problem)) return device;
  try {
    std::unique_ptr<Device> device = sources.second();
    sources.found = Found::Second;
    return device;
  } catch (const TESKAudioError& error) {
    throw TESKAudioError(problem + error.what());
  }
}

}  // namespace

DeviceSource FirstDeviceOf(DeviceSource first, DeviceSource second) {
  const auto sources = std::make_shared<Sources>();
  sources->first = std::move(first);
  sources->second = std::move(second);
  return [sources] {
    if (sources->found == Found::First) return sources->first();
    if (sources->found == Found::Second) return sources->second();
    return OpenAny(*sources);
  };
}

}  // namespace tesk_audio
