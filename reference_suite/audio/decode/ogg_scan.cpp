#include "reference_suite/audio/decode/ogg_scan.h"

#include <ogg/ogg.h>

#include <map>
#include <new>

namespace tesk_audio {

namespace {

constexpr long kChunkBytes = 64 * 1024;

class PageReader {
 public:
  explicit PageReader(AudioFile& file) : file_(file) { ogg_sync_init(&sync_); }
  ~PageReader() { ogg_sync_clear(&sync_); }
  PageReader(const PageReader&) = delete;
  PageReader& operator=(const PageReader&) = delete;

  // False at the end of the file. `skipped` tells whether bytes that are no page came before this one.
  bool Next(ogg_page* page, bool* skipped) {
    *skipped = false;
    for (;;) {
      const long step = ogg_sync_pageseek(&sync_, page);
      if (step > 0) return true;
      if (step < 0) *skipped = true;
      if (step == 0 && !Feed_()) return false;
    }
  }

 private:
  bool Feed_() {
    char* room = ogg_sync_buffer(&sync_, kChunkBytes);
    if (room == nullptr) throw std::bad_alloc();
    const std::size_t got = file_.Read(room, kChunkBytes);
    ogg_sync_wrote(&sync_, static_cast<long>(got));
    return got > 0;
  }

  AudioFile& file_;
  ogg_sync_state sync_{};
};

}  // namespace

OggScan ScanOgg(AudioFile& file) {
  OggScan scan;
  file.Seek(0);
  PageReader reader(file);
  std::map<int, long> lastNumber;  // of each stream
  bool audioBegan = false;
  ogg_page page{};
  bool skipped = false;
  while (reader.Next(&page, &skipped)) {
    const bool begins = ogg_page_bos(&page) != 0;
    const long number = ogg_page_pageno(&page);
    const auto last = lastNumber.find(ogg_page_serialno(&page));
    if (begins && audioBegan) scan.chained = true;
    const bool gap = !begins && last != lastNumber.end() && number != last->second + 1;
    if (gap && audioBegan) scan.lostInside = true;
    if (gap && !audioBegan && skipped) scan.lostStart = true;
    lastNumber[ogg_page_serialno(&page)] = number;
    if (ogg_page_granulepos(&page) > 0) audioBegan = true;
    scan.lostEnd = ogg_page_eos(&page) == 0;
  }
  return scan;
}

}  // namespace tesk_audio
