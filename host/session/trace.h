#pragma once

#include <fstream>
#include <string>

#include "Sources/types.h"

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

// Writes a trace as CSV, one row a read. The file is there when Commit has returned, and not before.
class Trace {
 public:
  // An empty path writes nothing. Throws Failure, as every operation does when the disk is full.
  explicit Trace(const std::string& path);
  ~Trace();
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  void Write(const TraceRow& row);
  void Commit();

 private:
  void Check_();

  std::string path_;
  const std::string finalPath_;  // without links
  std::string partPath_;
  std::ofstream out_;
};

}  // namespace orbel::host
