#include "Sources/file_loader/content_deleter_thread.h"

#include <unistd.h>

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "Sources/file_loader/report_exception.h"
#include "exc/lock/scope_lock.h"
#include "exc/result/pthread_error_checker.h"
#include "suite/utility/thread_names.h"

namespace {

// The line that a log entry about a failed callback names.
constexpr int kDeletionFailedLine = 169;

void NameThisThread() noexcept {
  try {
    exc::thread_names.SetNameOfCurrentThread("AudioContentDeleter");
  } catch (...) {
    // A thread without a name frees audio as well.
  }
}

// Sleeping comes first, so that a player that is closed at once is never called.
void DeleteOnceASecond(AudioContentDeleterThreadData& data) noexcept {
  try {
    while (true) {
      sleep(1);
      if (!data.ShouldRun()) break;
      data.DoAudioContentDeleterCallback();
    }
  } catch (const std::exception& error) {
    file_loader::ReportException(error.what(), kDeletionFailedLine);
  } catch (...) {
    file_loader::ReportException("Unknown exception.", kDeletionFailedLine);
  }
}

extern "C" void* AudioContentDeleterThread(void* record) {
  NameThisThread();
  DeleteOnceASecond(*static_cast<AudioContentDeleterThreadData*>(record));
  return nullptr;
}

}  // namespace

AudioContentDeleterThreadData::AudioContentDeleterThreadData(void (*callback)(void*), void* argument)
    : exc::Lockable("AudioContentDeleterThreadData"), callback_(callback), argument_(argument) {}

AudioContentDeleterThreadData::~AudioContentDeleterThreadData() = default;

bool AudioContentDeleterThreadData::ShouldRun() {
  exc::ScopeLock lock(*this);
  return shouldRun_;
}

void AudioContentDeleterThreadData::Exit() {
  exc::ScopeLock lock(*this);
  shouldRun_ = false;
}

void AudioContentDeleterThreadData::DoAudioContentDeleterCallback() {
  callback_(argument_);
}

AudioContentDeleterThreadData* StartAudioContentDeleterThread(void (*callback)(void*), void* argument,
                                                              pthread_t* thread) {
  auto data = std::make_unique<AudioContentDeleterThreadData>(callback, argument);
  // Made first: once the thread runs, nothing may throw and take its record away.
  const std::string what = "Creating audio content deleter thread.";
  const int result = pthread_create(thread, nullptr, AudioContentDeleterThread, data.get());
  exc::PThreadErrorChecker<int, std::runtime_error>(result, what);
  return data.release();
}
