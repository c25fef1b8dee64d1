#include "tests/host/demo/decoded_vorbis.h"

#include <vorbis/vorbisfile.h>

#include <algorithm>
#include <cstdio>

namespace {

struct Source {
  const std::vector<std::uint8_t>& bytes;
  std::size_t position = 0;
};

std::size_t ReadBytes(void* target, std::size_t size, std::size_t count, void* handle) {
  auto& source = *static_cast<Source*>(handle);
  const std::size_t taken = std::min(size * count, source.bytes.size() - source.position);
  std::copy_n(source.bytes.data() + source.position, taken, static_cast<std::uint8_t*>(target));
  source.position += taken;
  return taken / size;
}

int SeekBytes(void* handle, ogg_int64_t offset, int whence) {
  auto& source = *static_cast<Source*>(handle);
  if (whence == SEEK_CUR) offset += static_cast<ogg_int64_t>(source.position);
  if (whence == SEEK_END) offset += static_cast<ogg_int64_t>(source.bytes.size());
  source.position = static_cast<std::size_t>(offset);
  return 0;
}

long TellBytes(void* handle) {
  return static_cast<long>(static_cast<Source*>(handle)->position);
}

}  // namespace

DecodedVorbis DecodeVorbis(const std::vector<std::uint8_t>& bytes) {
  DecodedVorbis decoded;
  Source source{bytes};
  OggVorbis_File file;
  const ov_callbacks callbacks{ReadBytes, SeekBytes, nullptr, TellBytes};
  if (ov_open_callbacks(&source, &file, nullptr, 0, callbacks) != 0) return decoded;
  decoded.opened = true;
  decoded.promisedFrames = ov_pcm_total(&file, -1);
  decoded.rate = static_cast<int>(ov_info(&file, -1)->rate);
  decoded.channels = ov_info(&file, -1)->channels;
  decoded.serial = ov_serialnumber(&file, -1);
  vorbis_comment* comments = ov_comment(&file, -1);
  std::string tag = "TITLE";
  if (const char* title = vorbis_comment_query(comments, tag.data(), 0)) decoded.title = title;
  float** frames = nullptr;
  int section = 0;
  for (long count = ov_read_float(&file, &frames, 4096, &section); count > 0;
       count = ov_read_float(&file, &frames, 4096, &section)) {
    decoded.left.insert(decoded.left.end(), frames[0], frames[0] + count);
    decoded.right.insert(decoded.right.end(), frames[1], frames[1] + count);
  }
  ov_clear(&file);
  return decoded;
}
