#pragma once

#include <pthread.h>

#include <string>

#include "exc/lock/lockable.h"

namespace tesk_audio {
class AudioSampleContent;
}

// One song being decoded: which file, whom to tell when it is done, and afterwards the content or the error.
//
// Threads    LOADER writes content and error before it calls back; whoever was called back reads them after.
// Locks      its own, for the joined flag alone: that is the one field that two threads touch at a time.
// Ownership  the starter owns the record; the content belongs to whoever takes it, never to the record.
class FileLoaderData : public exc::Lockable {
 public:
  using FinishedCallback = void (*)(FileLoaderData*);

  // `contentArgument` is handed to the decoder unchanged. `finished` is called once, on the loader thread,
  // with or without an error; `userData` is for it alone.
  FileLoaderData(const std::string& songNumber, const std::string& audioFilePath,
                 const std::string& contentArgument, FinishedCallback finished, void* userData);
  ~FileLoaderData() override;

  // Decodes the file, keeps the content and returns it. Lets the decoder's exceptions through. LOADER
  tesk_audio::AudioSampleContent* Load();

  // An error stopped the job. The id is one of error_ids.h. LOADER
  void RecordError(int id, const char* reason) noexcept;

  // Calls back. The record may be gone when this returns. LOADER
  void CallFinished();

  // Waits for the end of the thread. Never with a lock held that the finished callback takes. Throws
  // exc::NOERRError. Does not set the joined flag: set it before, so that the callback keeps its hands off.
  void Join();

  // Whether somebody joins, or has joined, the thread; that one deletes the record. ANY
  bool Joined();
  void Joined(bool joined);

  tesk_audio::AudioSampleContent* AudioContent() const { return audioContent_; }
  std::string SongNumber() const { return songNumber_; }
  pthread_t* ThreadID() { return &threadId_; }
  void* UserData() const { return userData_; }

  bool GetErrorOccurred() const { return errorOccurred_; }
  // Meaningful only when an error occurred.
  int GetErrorId() const { return errorId_; }
  std::string GetErrorReason() const { return errorReason_; }

 private:
  const std::string songNumber_;
  const std::string audioFilePath_;
  const std::string contentArgument_;
  const FinishedCallback finished_;
  void* const userData_;
  tesk_audio::AudioSampleContent* audioContent_ = nullptr;
  pthread_t threadId_{};
  bool joined_ EXC_GUARDED_BY(this) = false;
  [[maybe_unused]] bool reserved_ = false;  // part of the record; nothing here reads it
  bool errorOccurred_ = false;
  int errorId_ = 0;
  std::string errorReason_;
};
