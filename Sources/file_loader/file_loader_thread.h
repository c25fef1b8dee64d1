#pragma once

#include <string>

#include "Sources/file_loader/file_loader_data.h"

// Starts the decoding of one song on a thread of its own, named "file_loader" and the song's number. The
// caller owns the record and sees to it that the thread is joined or detached. Throws std::runtime_error when
// the system gives no thread; the record is not freed then. Threads: ANY.
FileLoaderData* StartFileLoaderThread(const std::string& songNumber, const std::string& audioFilePath,
                                      const std::string& contentArgument,
                                      FileLoaderData::FinishedCallback finished, void* userData);

// The thread's body; `record` is a FileLoaderData. Decodes, records content or error, calls back once, and
// returns null. No exception leaves it.
extern "C" void* FileLoaderThread(void* record);
