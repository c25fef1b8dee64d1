#include "Sources/file_loader/file_loader_data.h"

#include <new>

#include "exc/lock/scope_lock.h"
#include "exc/result/noerr_error.h"
#include "exc/result/require_zero.h"
#include "suite/audio/create.h"

FileLoaderData::FileLoaderData(const std::string& songNumber, const std::string& audioFilePath,
                               const std::string& contentArgument, FinishedCallback finished, void* userData)
    : exc::Lockable("FileLoaderData"),
      songNumber_(songNumber),
      audioFilePath_(audioFilePath),
      contentArgument_(contentArgument),
      finished_(finished),
      userData_(userData) {}

FileLoaderData::~FileLoaderData() = default;

tesk_audio::AudioSampleContent* FileLoaderData::Load() {
  audioContent_ = tesk_audio::CreateAudioSampleContent(audioFilePath_, contentArgument_);
  return audioContent_;
}

void FileLoaderData::RecordError(int id, const char* reason) noexcept {
  errorOccurred_ = true;
  errorId_ = id;
  try {
    errorReason_ = reason;
  } catch (const std::bad_alloc&) {
    // No memory for the words: that there was an error, and of which kind, still gets through.
  }
}

void FileLoaderData::CallFinished() {
  finished_(this);
}

void FileLoaderData::Join() {
  void* thread_data = nullptr;
  const int rc = pthread_join(threadId_, &thread_data);
  // Only a join that failed needs words: there is not always memory to make them.
  if (rc != 0) exc::RequireZero<int, exc::NOERRError>(rc, "pthread_join(fld->thread_id, &thread_data)");
}

bool FileLoaderData::Joined() {
  exc::ScopeLock lock(*this);
  return joined_;
}

void FileLoaderData::Joined(bool joined) {
  exc::ScopeLock lock(*this);
  joined_ = joined;
}
