#include "reference_suite/audio/decode/sndfile_input.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

namespace tesk_audio {

namespace {

SndfileInput& InputOf(void* self) {
  return *static_cast<SndfileInput*>(self);
}

}  // namespace

void SndfileInput::Replace(std::string front, long long start) {
  front_ = std::move(front);
  start_ = start;
  position_ = 0;
}

SNDFILE* SndfileInput::Open(SF_INFO* info) {
  SF_VIRTUAL_IO callbacks{LengthCallback_, SeekCallback_, ReadCallback_, WriteCallback_, TellCallback_};
  return sf_open_virtual(&callbacks, SFM_READ, info, this);
}

sf_count_t SndfileInput::Length_() const {
  return static_cast<sf_count_t>(front_.size()) + std::max(0LL, file_.Size() - start_);
}

std::size_t SndfileInput::Read_(char* buffer, std::size_t count) {
  const auto size = static_cast<long long>(front_.size());
  std::size_t done = 0;
  if (position_ < size) {
    done = std::min(count, static_cast<std::size_t>(size - position_));
    std::memcpy(buffer, front_.data() + position_, done);
    position_ += static_cast<long long>(done);
  }
  if (done == count) return done;
  file_.Seek(start_ + position_ - size);
  const std::size_t got = file_.Read(buffer + done, count - done);
  position_ += static_cast<long long>(got);
  return done + got;
}

sf_count_t SndfileInput::LengthCallback_(void* self) {
  return InputOf(self).Length_();
}

sf_count_t SndfileInput::SeekCallback_(sf_count_t offset, int whence, void* self) {
  SndfileInput& input = InputOf(self);
  if (whence == SEEK_CUR) offset += input.position_;
  if (whence == SEEK_END) offset += input.Length_();
  if (offset < 0) return -1;
  input.position_ = offset;
  return offset;
}

sf_count_t SndfileInput::ReadCallback_(void* buffer, sf_count_t count, void* self) {
  return static_cast<sf_count_t>(
      InputOf(self).Read_(static_cast<char*>(buffer), static_cast<std::size_t>(count)));
}

sf_count_t SndfileInput::WriteCallback_(const void* /*buffer*/, sf_count_t /*count*/, void* /*self*/) {
  return 0;
}

sf_count_t SndfileInput::TellCallback_(void* self) {
  return InputOf(self).position_;
}

}  // namespace tesk_audio
