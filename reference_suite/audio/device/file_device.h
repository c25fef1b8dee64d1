#pragma once

#include <pthread.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/encode/sound_file_writer.h"

namespace tesk_audio {

// Writes what it takes into a sound file. It has no clock: it takes what it is told to, as fast as that is
// rendered and written, and what somebody waits for: a fade-out. The file appears under its name with Finish,
// complete, or not at all.
//
// A device that goes without Finish takes the file with it, but while a KeptFile lives: then the next device
// with the same name goes on behind what was written.
//
// Units      frames; seconds of sound.
// Threads    its own while it runs; Take and Finish by one other thread.
// Errors     what the writing throws is kept, thrown by Take and Finish, and ends the taking, but for what
//            somebody waits for, which then goes nowhere.
class FileDevice : public Device {
 public:
  static constexpr unsigned kPeriodFrames = 64;

  // The form of the file goes by its name (FormatOfName), and is WAV of 32-bit float where that asks for
  // none. Throws SoundFileError.
  FileDevice(const std::string& path, double rateHz, unsigned channels);
  ~FileDevice() override;
  FileDevice(const FileDevice&) = delete;
  FileDevice& operator=(const FileDevice&) = delete;

  double GetRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return channels_; }
  unsigned GetPeriodFrames() const override { return kPeriodFrames; }
  unsigned GetLatencyFrames() const override { return 0; }
  std::string GetDescription() const override;
  bool IsFreewheeling() const override { return true; }
  void Start(DeviceCallback& callback) override;
  void Stop() override;

  // Returns when that much more has been written, but for less than a period.
  void Take(double seconds);
  // Nothing can be taken afterwards.
  void Finish();

 private:
  static void* ThreadBody_(void* self);
  void Run_() noexcept;
  void TakePeriod_();
  void ThrowIfFailed_() const;

  std::string path_;
  const double rateHz_;
  const unsigned channels_;
  std::unique_ptr<SoundFileWriter> writer_;  // the thread's while it runs
  std::vector<float> frames_;
  DeviceCallback* callback_ = nullptr;
  double granted_ = 0.0;  // frames in all
  std::atomic<long long> allowed_{0};
  std::atomic<long long> taken_{0};
  std::atomic<bool> failed_{false};
  mutable std::mutex mutex_;
  std::string failure_;  // guarded by it
  pthread_t thread_{};
  bool runs_ = false;
  bool isFinished_ = false;
  std::atomic<bool> stops_{false};
};

// See above. Threads: HOST.
class KeptFile {
 public:
  KeptFile();
  ~KeptFile();
  KeptFile(const KeptFile&) = delete;
  KeptFile& operator=(const KeptFile&) = delete;
};

// Of the file device that there is; false when there is none. Throw SoundFileError when writing has failed.
// Threads    HOST, which opens and closes shows as well.
bool LetFileDeviceTake(double seconds);
bool FinishFileDevice();

}  // namespace tesk_audio
