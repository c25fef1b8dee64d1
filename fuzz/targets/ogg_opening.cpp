// Two libraries keep something of an Ogg file that they refuse half way through the headers of a chain
// (crashes/audio has one for each): libvorbisfile its list of serial numbers, libsndfile the headers of a
// Vorbis stream behind one that it does not know. So nothing that they take while they open such a file
// counts as leaked. What they take later does, and so does everything of ours. Their own functions have no
// names by which a suppression could tell them apart. Stands in front of the libraries' by --wrap, where
// leaks are looked for.
#include <sanitizer/lsan_interface.h>
#include <sndfile.h>
#include <vorbis/vorbisfile.h>

#include <array>
#include <cstdio>
#include <string_view>

namespace {

bool IsOgg(const SF_VIRTUAL_IO& file, void* user) {
  std::array<char, 4> head{};
  const sf_count_t before = file.tell(user);
  const sf_count_t got = file.read(head.data(), head.size(), user);
  file.seek(before, SEEK_SET, user);
  return got == 4 && std::string_view(head.data(), head.size()) == "OggS";
}

}  // namespace

extern "C" {

int __real_ov_open_callbacks(void* source, OggVorbis_File* file, const char* initial, long bytes,
                             ov_callbacks callbacks);

int __wrap_ov_open_callbacks(void* source, OggVorbis_File* file, const char* initial, long bytes,
                             ov_callbacks callbacks);
int __wrap_ov_open_callbacks(void* source, OggVorbis_File* file, const char* initial, long bytes,
                             ov_callbacks callbacks) {
  const __lsan::ScopedDisabler untold;
  return __real_ov_open_callbacks(source, file, initial, bytes, callbacks);
}

SNDFILE* __real_sf_open_virtual(SF_VIRTUAL_IO* file, int mode, SF_INFO* info, void* user);

SNDFILE* __wrap_sf_open_virtual(SF_VIRTUAL_IO* file, int mode, SF_INFO* info, void* user);
SNDFILE* __wrap_sf_open_virtual(SF_VIRTUAL_IO* file, int mode, SF_INFO* info, void* user) {
  if (mode != SFM_READ || !IsOgg(*file, user)) return __real_sf_open_virtual(file, mode, info, user);
  const __lsan::ScopedDisabler untold;
  return __real_sf_open_virtual(file, mode, info, user);
}

}  // extern "C"
