#include "host/session/trace.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <locale>
#include <system_error>

#include "host/session/failure.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

constexpr char kCure[] = ". Choose another place, or make room.";

// Text with a comma or a quotation mark in quotation marks, as CSV has it.
std::string Field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char letter : text) quoted += letter == '"' ? std::string("\"\"") : std::string(1, letter);
  return quoted + "\"";
}

// Where a link leads to, so that the link stays; the name itself when there is nothing yet.
std::string LinkTarget(const std::string& path) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(path, error);
  return error ? path : target.string();
}

// A pipe or a terminal takes the rows as they come; giving it another file's name would replace it.
bool TakesRowsAtOnce(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

}  // namespace

Trace::Trace(const std::string& path)
    : path_(path),
      finalPath_(path.empty() ? "" : LinkTarget(path)),
      partPath_(path.empty() || TakesRowsAtOnce(path) ? "" : finalPath_ + ".part") {
  if (path_.empty()) return;
  out_.imbue(std::locale::classic());  // whatever a host with windows has chosen
  out_.open(partPath_.empty() ? path_ : partPath_, std::ios::binary | std::ios::trunc);
  out_ << "output_frame,song,sample,frames,tick,next_tick,scale,transposition,event\n";
  Check_();
}

Trace::~Trace() {
  if (partPath_.empty()) return;
  out_.close();
  std::remove(partPath_.c_str());
}

void Trace::Write(const TraceRow& row) {
  if (path_.empty()) return;
  out_ << row.outputFrame << ',' << Field(row.song) << ',' << row.sample << ',' << row.frames << ','
       << row.tick << ',' << row.nextTick << ',' << ShortNumber(row.scale) << ',' << row.transposition << ','
       << row.event << '\n';
  Check_();
}

void Trace::Commit() {
  if (path_.empty()) return;
  out_.close();
  Check_();
  if (!partPath_.empty() && std::rename(partPath_.c_str(), finalPath_.c_str()) != 0) {
    throw Failure(Shown(path_) + ": cannot be written: " + std::generic_category().message(errno) + kCure);
  }
  partPath_.clear();
}

void Trace::Check_() {
  if (out_) return;
  throw Failure(Shown(path_) + ": cannot be written: " + std::generic_category().message(errno) + kCure);
}

}  // namespace orbel::host
