#include "host/session/trace.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "exc/file/unfinished_file_error.h"
#include "host/session/failure.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

constexpr std::size_t kEnoughToWrite = std::size_t{64} * 1024;

// Text with a comma or a quotation mark in quotation marks, as CSV has it.
std::string Field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char letter : text) quoted += letter == '"' ? std::string("\"\"") : std::string(1, letter);
  return quoted + "\"";
}

// To give a pipe or a terminal another file's name would replace it.
bool TakesRowsAtOnce(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

[[noreturn]] void Fail(const std::string& path, int code) {
  throw Failure(Shown(path) + ": cannot be written: " + std::generic_category().message(code) +
                ". Choose another place, or make room.");
}

[[noreturn]] void Fail(const std::string& path, const exc::UnfinishedFileError& error) {
  if (error.GetCode() != 0) Fail(path, error.GetCode());
  throw Failure(Shown(path + ": cannot be written: " + error.what()) + ".");
}

}  // namespace

Trace::Trace(const std::string& path, const std::string& ifInterrupted) : path_(path) {
  if (path_.empty()) return;
  try {
    if (TakesRowsAtOnce(path_)) {
      stream_ = std::make_unique<RowStream>(path_, ifInterrupted);
    } else {
      file_ = std::make_unique<exc::UnfinishedFile>(path_);
    }
  } catch (const exc::UnfinishedFileError& error) {
    Fail(path_, error);
  }
  rows_ = "output_frame,song,sample,frames,tick,next_tick,scale,transposition,event\n";
  WriteRows_();
}

// By hand: streams write numbers as the locale has them, whatever a host with windows has chosen.
void Trace::Write(const TraceRow& row) {
  if (path_.empty()) return;
  rows_ += std::to_string(row.outputFrame) + ',' + Field(row.song) + ',' + std::to_string(row.sample) + ',' +
           std::to_string(row.frames) + ',' + std::to_string(row.tick) + ',' + std::to_string(row.nextTick) +
           ',' + ShortNumber(row.scale) + ',' + std::to_string(row.transposition) + ',' + row.event + '\n';
  if (stream_ || rows_.size() >= kEnoughToWrite) WriteRows_();
}

void Trace::Commit() {
  if (path_.empty()) return;
  WriteRows_();
  stream_.reset();
  try {
    if (file_) file_->Commit();
  } catch (const exc::UnfinishedFileError& error) {
    Fail(path_, error);
  }
  file_.reset();
}

void Trace::WriteRows_() {
  if (stream_) stream_->Write(rows_);
  for (std::string_view left = rows_; file_ && !left.empty();) {
    const ssize_t written = ::write(file_->GetDescriptor(), left.data(), left.size());
    if (written >= 0) left.remove_prefix(static_cast<std::size_t>(written));
    if (written < 0 && errno != EINTR) Fail(path_, errno);
  }
  rows_.clear();
}

}  // namespace orbel::host
