#include "reference_suite/audio/decode/byte_window.h"

#include <algorithm>
#include <cstring>

namespace tesk_audio {

namespace {

constexpr std::size_t kWindowBytes = std::size_t{64} * 1024;

}  // namespace

ByteWindow::ByteWindow(AudioFile& file, long long end) : file_(file), end_(end), bytes_(kWindowBytes) {
  GoTo(0);
}

void ByteWindow::GoTo(long long position) {
  const long long filled = from_ + static_cast<long long>(fill_);
  if (isAllRead_ || position + static_cast<long long>(kAhead) <= filled) return;
  // What is known of it moves to the front.
  const auto keep = static_cast<std::size_t>(std::max(0LL, filled - position));
  std::memmove(bytes_.data(), bytes_.data() + (fill_ - keep), keep);
  from_ = position;
  file_.Seek(position + static_cast<long long>(keep));
  fill_ = keep + file_.Read(bytes_.data() + keep, bytes_.size() - keep);
  // A disk that fails takes long over it each time.
  isAllRead_ = fill_ < bytes_.size();
}

const unsigned char* ByteWindow::Bytes(long long position, std::size_t count) const {
  const long long behind = position + static_cast<long long>(count);
  if (position < from_ || behind > end_ || behind > from_ + static_cast<long long>(fill_)) return nullptr;
  return bytes_.data() + (position - from_);
}

bool ByteWindow::Has(long long position, std::string_view text) const {
  const unsigned char* const bytes = Bytes(position, text.size());
  return bytes != nullptr && std::memcmp(bytes, text.data(), text.size()) == 0;
}

}  // namespace tesk_audio
