// libvorbisfile keeps its list of serial numbers when it refuses a file half way through the headers of a
// chain (crashes/audio has one), so nothing that it takes while it opens a file counts as leaked. What it
// takes later does, and so does everything of ours. Its own functions have no names by which a suppression
// could tell them apart. Stands in front of the library's by --wrap, where leaks are looked for.
#include <sanitizer/lsan_interface.h>
#include <vorbis/vorbisfile.h>

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

}  // extern "C"
