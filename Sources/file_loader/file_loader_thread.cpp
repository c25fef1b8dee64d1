#include "Sources/file_loader/file_loader_thread.h"

#include <exception>
#include <stdexcept>
#include <string>

#include "Sources/file_loader/error_ids.h"
#include "Sources/file_loader/report_exception.h"
#include "exc/result/pthread_error_checker.h"
#include "suite/audio/errors.h"
#include "suite/utility/format.h"
#include "suite/utility/thread_names.h"

namespace {

// The line that a log entry about a failed callback names.
constexpr int kCallbackFailedLine = 104;

void NameThisThread(const FileLoaderData& job) noexcept {
  try {
    exc::thread_names.SetNameOfCurrentThread(exc::format("file_loader%s", job.SongNumber().c_str()));
  } catch (...) {
    // A thread without a name decodes as well.
  }
}

// Most specific error first: the kinds derive from one another.
void LoadAndRecord(FileLoaderData& job) noexcept {
  try {
    job.Load();
  } catch (const tesk_audio::OggVorbisDecodeError& error) {
    job.RecordError(file_loader::kOggVorbisDecodeError, error.what());
  } catch (const tesk_audio::AudioSampleContentError& error) {
    job.RecordError(file_loader::kAudioSampleContentError, error.what());
  } catch (const tesk_audio::TESKAudioError& error) {
    job.RecordError(file_loader::kTeskAudioError, error.what());
  } catch (const std::exception& error) {
    job.RecordError(file_loader::kOtherError, error.what());
  } catch (...) {
    job.RecordError(file_loader::kOtherError, "Unknown exception");
  }
}

// The job may be deleted by whoever is told: it is not touched afterwards.
void TellOwner(FileLoaderData& job) noexcept {
  try {
    job.CallFinished();
  } catch (const std::exception& error) {
    file_loader::ReportException(error.what(), kCallbackFailedLine);
  } catch (...) {
    file_loader::ReportException("Unknown exception.", kCallbackFailedLine);
  }
}

}  // namespace

void* FileLoaderThread(void* record) {
  auto& job = *static_cast<FileLoaderData*>(record);
  NameThisThread(job);
  LoadAndRecord(job);
  TellOwner(job);
  return nullptr;
}

FileLoaderData* StartFileLoaderThread(const std::string& songNumber, const std::string& audioFilePath,
                                      const std::string& contentArgument,
                                      FileLoaderData::FinishedCallback finished, void* userData) {
  // Made first: once the thread runs, its record must reach the caller.
  const std::string what = "Creating file loader thread";
  auto* job = new FileLoaderData(songNumber, audioFilePath, contentArgument, finished, userData);
  const int result = pthread_create(job->ThreadID(), nullptr, FileLoaderThread, job);
  exc::PThreadErrorChecker<int, std::runtime_error>(result, what);
  return job;
}
