#pragma once

#include <memory>
#include <string>

#include "Sources/types.h"
#include "exc/file/unfinished_file.h"
#include "host/session/row_stream.h"

namespace orbel::host {

// One read, as a row of the trace.
struct TraceRow {
  long long outputFrame = 0;  // frames of output before this read
  std::string song;
  SampleCount sample = 0;  // first frame of song audio
  long long frames = 0;    // frames of output at scale 1; at a caesura the silence written there
  TickIndex tick = 0;      // of the first frame
  TickIndex nextTick = 0;  // the control position after the read
  double scale = 1.0;
  int transposition = 0;
  std::string event;  // empty, jump, caesura, end, attacca or seek
};

// Writes a trace as CSV, one row a read. The file is there when Commit has returned, and not before; a pipe,
// a terminal or a device is given the rows as they come.
class Trace {
 public:
  // An empty path writes nothing. `ifInterrupted`: what an interrupt leaves undone, in words. Throws Failure,
  // as every operation does when the disk is full.
  explicit Trace(const std::string& path, const std::string& ifInterrupted = "the trace was not written");
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  void Write(const TraceRow& row);
  void Commit();

 private:
  void WriteRows_();

  const std::string path_;
  std::unique_ptr<exc::UnfinishedFile> file_;
  std::unique_ptr<RowStream> stream_;
  std::string rows_;  // that the file does not have yet
};

}  // namespace orbel::host
