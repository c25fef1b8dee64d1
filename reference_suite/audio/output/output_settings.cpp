#include "reference_suite/audio/output/output_settings.h"

#include "exc/lock/lockable.h"
#include "exc/lock/scope_lock.h"

namespace tesk_audio {

namespace {

class Settings : public exc::Lockable {
 public:
  Settings() : exc::Lockable("OutputSettings") {}

  void Set(const OutputSettings& value) {
    exc::ScopeLock lock(*this);
    value_ = value;
  }
  OutputSettings Get() {
    exc::ScopeLock lock(*this);
    return value_;
  }

 private:
  OutputSettings value_ EXC_GUARDED_BY(this);
};

Settings& TheSettings() {
  static Settings settings;
  return settings;
}

}  // namespace

void ConfigureOutput(const OutputSettings& settings) {
  TheSettings().Set(settings);
}

OutputSettings GetOutputSettings() {
  return TheSettings().Get();
}

}  // namespace tesk_audio
