#include "reference_suite/audio/device/file_device.h"

#include <cmath>
#include <utility>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/encode/sound_file_error.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "reference_suite/audio/text/keep_words.h"
#include "reference_suite/audio/text/shown_path.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr long long kMillisecond = 1'000'000;
constexpr long long kLook = kMillisecond / 10;
// For a render thread that the machine holds up.
constexpr long long kRenderPatience = 2'000 * kMillisecond;
constexpr double kLeftSeconds = 0.004;

std::atomic<FileDevice*> theDevice{nullptr};

// A file between two devices.
struct Unfinished {
  std::mutex mutex;
  int keepers = 0;
  std::string path;
  double rateHz = 0.0;
  unsigned channels = 0;
  std::unique_ptr<SoundFileWriter> writer;
};

Unfinished& TheUnfinished() {
  static Unfinished unfinished;
  return unfinished;
}

std::unique_ptr<SoundFileWriter> BeginOrGoOn(const std::string& path, double rateHz, unsigned channels) {
  Unfinished& kept = TheUnfinished();
  const std::lock_guard lock(kept.mutex);
  if (!kept.writer || kept.path != path)
    return std::make_unique<SoundFileWriter>(path, FormatOfName(path).value_or(SoundFileFormat::Float),
                                             rateHz, channels);
  if (kept.rateHz != rateHz || kept.channels != channels) {
    throw SoundFileError(ShownPath(path) +
                         ": what follows has another rate or number of channels than the file; play it into "
                         "another file");
  }
  return std::move(kept.writer);
}

}  // namespace

FileDevice::FileDevice(const std::string& path, double rateHz, unsigned channels)
    : path_(path),
      rateHz_(rateHz),
      channels_(channels),
      writer_(BeginOrGoOn(path, rateHz, channels)),
      frames_(std::size_t{kPeriodFrames} * channels) {
  theDevice = this;
}

FileDevice::~FileDevice() {
  FileDevice* self = this;
  theDevice.compare_exchange_strong(self, nullptr);
  Stop();
  if (isFinished_ || failed_) return;
  Unfinished& kept = TheUnfinished();
  const std::lock_guard lock(kept.mutex);
  if (kept.keepers == 0) return;
  kept.path.swap(path_);  // nothing allocates where nobody could be told
  kept.rateHz = rateHz_;
  kept.channels = channels_;
  kept.writer = std::move(writer_);
}

std::string FileDevice::GetDescription() const {
  return "the file " + ShownPath(path_) + ", " + std::to_string(std::lround(rateHz_)) + " Hz";
}

void FileDevice::Start(DeviceCallback& callback) {
  if (runs_) return;
  callback_ = &callback;
  stops_ = false;
  thread_ = StartThread(&FileDevice::ThreadBody_, this, "The file output");
  runs_ = true;
}

void FileDevice::Stop() {
  if (!runs_) return;
  stops_ = true;
  ::pthread_join(thread_, nullptr);
  runs_ = false;
}

void* FileDevice::ThreadBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("FileAudioDevice");
  static_cast<FileDevice*>(self)->Run_();
  return nullptr;
}

void FileDevice::Run_() noexcept {
  while (!stops_) {
    const bool mayTake = !failed_ && allowed_ - taken_ >= static_cast<long long>(kPeriodFrames);
    if (!mayTake && !callback_->IsAwaited()) {
      SleepFor(kLook);
      continue;
    }
    if (failed_) {
      // Whoever stops what plays waits to be obeyed, though nothing is written any more.
      callback_->Process(frames_.data(), kPeriodFrames);
      continue;
    }
    try {
      TakePeriod_();
    } catch (const std::exception& error) {
      const std::lock_guard lock(mutex_);
      KeepWords(&failure_, error);
      failed_ = true;
    }
  }
}

// Some frames stay behind those that it takes: a pause or a seek that comes next finds something to fade out.
void FileDevice::TakePeriod_() {
  const long long deadline = MonotonicNow() + kRenderPatience;
  const std::size_t frames = kPeriodFrames + static_cast<std::size_t>(kLeftSeconds * rateHz_);
  while (!stops_ && !callback_->IsReady(frames) && MonotonicNow() < deadline) SleepFor(kLook);
  callback_->Process(frames_.data(), kPeriodFrames);
  writer_->Write(frames_.data(), kPeriodFrames);
  taken_ += kPeriodFrames;
}

void FileDevice::ThrowIfFailed_() const {
  const std::lock_guard lock(mutex_);
  if (failed_) throw SoundFileError(failure_);
}

void FileDevice::Take(double seconds) {
  granted_ += seconds * rateHz_;
  allowed_ = static_cast<long long>(granted_);
  while (runs_ && !failed_ && allowed_ - taken_ >= static_cast<long long>(kPeriodFrames)) SleepFor(kLook);
  ThrowIfFailed_();
}

void FileDevice::Finish() {
  Stop();
  ThrowIfFailed_();
  isFinished_ = true;
  writer_->Commit();
}

KeptFile::KeptFile() {
  Unfinished& kept = TheUnfinished();
  const std::lock_guard lock(kept.mutex);
  ++kept.keepers;
}

KeptFile::~KeptFile() {
  Unfinished& kept = TheUnfinished();
  const std::lock_guard lock(kept.mutex);
  if (--kept.keepers == 0) kept.writer.reset();
}

bool LetFileDeviceTake(double seconds) {
  FileDevice* const device = theDevice;
  if (device == nullptr) return false;
  device->Take(seconds);
  return true;
}

bool FinishFileDevice() {
  FileDevice* const device = theDevice.exchange(nullptr);
  if (device == nullptr) return false;
  device->Finish();
  return true;
}

}  // namespace tesk_audio
