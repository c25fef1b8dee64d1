#include "reference_suite/audio/decode/mp3_scan.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "reference_suite/audio/decode/byte_window.h"
#include "reference_suite/audio/decode/decoding_stop.h"

namespace tesk_audio {

namespace {

// How many headers must follow each other for a frame that does not stand right behind another; and for one
// of another format, of which a single damaged byte would otherwise make a reason to refuse the song.
constexpr int kHeadersToBeSure = 2;
constexpr int kHeadersOfAChange = 3;
static_assert(kHeadersOfAChange * MpegHeader::kMostFrameBytes + MpegHeader::kBytes <= ByteWindow::kAhead);

constexpr std::size_t kId3v1 = 128;
// What an encoder says of itself, and of what it added, in the first frame.
constexpr std::size_t kEncoderBytes = 36;

unsigned long long Big(const unsigned char* bytes) {
  return (0ULL + bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

long long Little(const std::string& text, std::size_t at) {
  unsigned long long value = 0;
  for (std::size_t i = 4; i > 0; --i) value = value << 8 | static_cast<unsigned char>(text[at + i - 1]);
  return static_cast<long long>(value);
}

std::string BytesBefore(AudioFile& file, long long end, std::size_t count) {
  std::string bytes(count, '\0');
  if (end < static_cast<long long>(count)) return bytes;
  file.Seek(end - static_cast<long long>(count));
  if (file.Read(bytes.data(), count) < count) return std::string(count, '\0');
  return bytes;
}

// Without the texts behind the music: ID3v1, and before it an APE tag.
long long EndOfFrames(AudioFile& file) {
  constexpr std::size_t kApe = 32;  // its end; it may have the like in front, which its size leaves out
  long long end = file.Size();
  if (BytesBefore(file, end, kId3v1).starts_with("TAG")) end -= kId3v1;
  const std::string ape = BytesBefore(file, end, kApe);
  if (!ape.starts_with("APETAGEX")) return end;
  const bool hasFront = (static_cast<unsigned char>(ape[23]) & 0x80) != 0;
  const long long bytes = Little(ape, 12) + (hasFront ? static_cast<long long>(kApe) : 0);
  return bytes >= static_cast<long long>(kApe) && bytes <= end ? end - bytes : end;
}

class Mp3Walk {
 public:
  explicit Mp3Walk(AudioFile& file) : window_(file, EndOfFrames(file)) {}

  Mp3Scan Run() {
    while (at_ < window_.End() && !scan_.change.has_value() && !DecodingStop::IsWanted()) {
      window_.GoTo(at_);
      if (window_.EndsBefore(at_)) break;
      Step_();
    }
    return std::move(scan_);
  }

 private:
  std::optional<MpegHeader> HeaderAt_(long long position) const {
    const unsigned char* const bytes = window_.Bytes(position, MpegHeader::kBytes);
    return bytes == nullptr ? std::nullopt : ReadMpegHeader(bytes);
  }

  // Whether a frame stands here and `count` headers in all follow each other, or up to the very end where
  // that is enough.
  bool IsSure_(MpegHeader header, int count, bool endIsEnough) const {
    long long position = at_;
    for (int seen = 1; seen < count; ++seen) {
      position += static_cast<long long>(header.bytes);
      if (position >= window_.End()) return endIsEnough && position == window_.End();
      const std::optional<MpegHeader> next = HeaderAt_(position);
      if (!next.has_value() || !next->SameFormat(header)) return false;
      header = *next;
    }
    return true;
  }

  // The length of the ID3 tag that stands here, 0 for none.
  long long Id3Bytes_() const {
    constexpr std::size_t kHeader = 10;
    if (!isLost_ && window_.Has(at_, "TAG") && window_.Bytes(at_, kId3v1) != nullptr) return kId3v1;
    const unsigned char* const tag = window_.Bytes(at_, kHeader);
    if (tag == nullptr || !window_.Has(at_, "ID3")) return 0;
    long long size = 0;
    for (std::size_t i = 6; i < kHeader; ++i) {
      if (tag[i] >= 0x80) return 0;
      size = size << 7 | tag[i];
    }
    const bool hasEnd = (tag[5] & 0x10) != 0;
    size += static_cast<long long>(hasEnd ? 2 * kHeader : kHeader);
    return size <= window_.End() - at_ ? size : 0;
  }

  // Where the mark of a frame without music stands; 0 for a frame with music.
  long long MarkOf_(const MpegHeader& header) const {
    const long long behind = at_ + static_cast<long long>(MpegHeader::kBytes + header.sideBytes);
    for (const long long mark : {behind, behind + 2}) {
      if (mark == behind + 2 && !header.hasSum) break;
      if (window_.Has(mark, "Xing") || window_.Has(mark, "Info")) return mark;
    }
    const long long vbri = at_ + 4 + 32;
    return window_.Has(vbri, "VBRI") ? vbri : 0;
  }

  // Of most bytes of junk one look is enough.
  bool MayBegin_() const {
    const unsigned char* const byte = window_.Bytes(at_, 1);
    return byte != nullptr && (*byte == 0xFF || *byte == 'I' || *byte == 'T');
  }

  void Step_() {
    if (!MayBegin_()) {
      isLost_ = true;
      ++at_;
      return;
    }
    if (const long long tag = Id3Bytes_()) {
      at_ += tag;
      return;
    }
    const std::optional<MpegHeader> header = HeaderAt_(at_);
    if (header.has_value() && Take_(*header)) {
      at_ += static_cast<long long>(header->bytes);
      return;
    }
    isLost_ = true;
    ++at_;
  }

  // False where there is no frame after all.
  bool Take_(const MpegHeader& header) {
    if (at_ + static_cast<long long>(header.bytes) > window_.End()) return false;
    const long long mark = MarkOf_(header);
    if (!scan_.format.has_value())
      return mark > 0 && !scan_.isTagged ? TakeTag_(header, mark) : Begin_(header);
    if (!header.SameFormat(*scan_.format)) {
      if (IsSure_(header, kHeadersOfAChange, false)) scan_.change = header;
      return scan_.change.has_value();
    }
    if (isLost_ && !IsSure_(header, kHeadersToBeSure, true)) return false;
    scan_.hasGaps = scan_.hasGaps || isLost_;
    isLost_ = false;
    if (mark > 0) ++scan_.tagsInside;
    ++scan_.frames;
    return true;
  }

  bool Begin_(const MpegHeader& header) {
    if (!IsSure_(header, kHeadersToBeSure, true)) return false;
    const unsigned char* const bytes = window_.Bytes(at_, MpegHeader::kBytes);
    std::copy_n(bytes, MpegHeader::kBytes, scan_.header.begin());
    scan_.format = header;
    scan_.start = at_;
    scan_.frames = 1;
    isLost_ = false;
    return true;
  }

  bool TakeTag_(const MpegHeader& header, long long mark) {
    const long long end = at_ + static_cast<long long>(header.bytes);
    scan_.isTagged = true;
    scan_.isVbri = window_.Has(mark, "VBRI");
    if (scan_.isVbri) return true;
    const unsigned char* const flags = window_.Bytes(mark + 4, 4);
    if (flags == nullptr) return true;
    const unsigned long long parts = Big(flags);
    long long position = mark + 8;
    if ((parts & 1) != 0) {
      const unsigned char* const count = window_.Bytes(position, 4);
      if (count != nullptr && position + 4 <= end) scan_.taggedFrames = static_cast<long long>(Big(count));
      position += 4;
    }
    if ((parts & 2) != 0) position += 4;    // bytes
    if ((parts & 4) != 0) position += 100;  // places to seek to
    if ((parts & 8) != 0) position += 4;    // quality
    const unsigned char* const encoder = window_.Bytes(position, kEncoderBytes);
    const bool fits = position + static_cast<long long>(kEncoderBytes) <= end;
    if (encoder != nullptr && fits && encoder[0] != 0) scan_.encoder.assign(encoder, encoder + kEncoderBytes);
    return true;
  }

  ByteWindow window_;
  long long at_ = 0;
  bool isLost_ = false;  // what stands before here is no frame
  Mp3Scan scan_;
};

}  // namespace

Mp3Scan ScanMp3(AudioFile& file) {
  return Mp3Walk(file).Run();
}

}  // namespace tesk_audio
