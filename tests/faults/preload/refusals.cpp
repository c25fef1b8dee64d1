// Loaded in front of the program: the system's calls, some of which are refused, delayed or wrong, as the
// environment says.
//
//   ORBEL_REFUSE_THREAD=N           the N-th thread is refused, from 1
//   ORBEL_REFUSE_THREAD_FOR_GOOD=1  and every one behind it
//   ORBEL_REFUSE_LOADER=N[,N...]    every thread that would decode one of the songs of these numbers
//   ORBEL_REFUSE_BODY=TEXT          every thread that would begin in a function whose symbol contains TEXT
//   ORBEL_REFUSE_MEMORY=N           the N-th malloc, calloc or realloc after the show was first looked at
//   ORBEL_REFUSE_MEMORY_FOR_GOOD=1  and every one behind it
//   ORBEL_REFUSE_MEMORY_AT_ONCE=1   counted from the first one of the process
//   ORBEL_REFUSE_READ=TEXT:BYTES    reading fails behind BYTES bytes of a file whose name contains TEXT
//   ORBEL_REFUSE_FOLDER=TEXT:ERRNO  opening a folder whose path ends in TEXT fails for that reason
//   ORBEL_HOLD_READ=TEXT:BYTES      reading waits there
//   ORBEL_HOLD_UNTIL=PATH           until this exists, or for a minute
//   ORBEL_SLOW_READ=US              every read takes as many microseconds longer
//   ORBEL_FULL_DISK=TEXT:BYTES      so many bytes find a place in files whose path contains TEXT, all of them
//                                   together
//   ORBEL_JUMPY_CLOCK=1             the time of day jumps to and fro by hours
//   ORBEL_USE_LOCALE=FILE           the program takes the locale of its environment, for C and for C++, and
//                                   "%.1f" of one and a half is written to this file
//   ORBEL_COUNT_REFUSALS=FILE       one byte is appended to this file for every thread that was refused
//   ORBEL_COUNT_HELD=FILE           and to this one for every program that has begun to wait in a read
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <locale>
#include <string>

#include "Sources/file_loader/file_loader_data.h"

namespace {

template <typename Function>
Function Real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

long Number(const char* name) {
  const char* const text = getenv(name);
  return text == nullptr ? 0 : atol(text);
}

std::atomic<long> threads{0};
std::atomic<long> allocations{0};
std::atomic<bool> showSeen{false};
std::atomic<unsigned> clockLooks{0};
long refusedThread = 0;
long refusedAllocation = 0;
bool refusesThreadsForGood = false;
const char* refusedLoader = nullptr;
const char* refusalsFile = nullptr;
bool refusesForGood = false;
std::atomic<bool> isMemoryKnown{false};

// From some place on in every file whose name contains some text.
class PlaceInFiles {
 public:
  // "TEXT:BYTES"; nowhere without it.
  void Take(const char* description) {
    if (description == nullptr) return;
    const char* const colon = strrchr(description, ':');
    snprintf(text_, sizeof text_, "%.*s", static_cast<int>(colon - description), description);
    offset_ = atol(colon + 1);
  }
  // Whether what ends at `end` in that file lies behind the place.
  bool IsBefore(int file, long long end) const { return text_[0] != '\0' && end > offset_ && IsIn(file); }
  long GetOffset() const { return offset_; }
  bool IsIn(int file) const {
    if (text_[0] == '\0') return false;
    char link[64];
    char name[4096];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, name, sizeof name - 1);
    if (length <= 0) return false;
    name[length] = '\0';
    return strstr(name, text_) != nullptr;
  }

 private:
  char text_[256] = {};
  long offset_ = 0;
};

PlaceInFiles refusedRead;
PlaceInFiles heldRead;
PlaceInFiles fullDisk;
std::atomic<long> bytesOnDisk{0};
useconds_t slowRead = 0;
bool clockJumps = false;

// As a program with windows would that has the library inside.
void UseLocaleOfEnvironment(const char* proof) {
  std::locale::global(std::locale(""));
  FILE* const file = fopen(proof, "w");
  if (file == nullptr || fprintf(file, "%.1f", 1.5) < 0 || fclose(file) != 0) abort();
}

__attribute__((constructor)) void ReadEnvironment() {
  const char* const localeProof = getenv("ORBEL_USE_LOCALE");
  if (localeProof != nullptr) UseLocaleOfEnvironment(localeProof);
  refusedThread = Number("ORBEL_REFUSE_THREAD");
  refusesThreadsForGood = Number("ORBEL_REFUSE_THREAD_FOR_GOOD") != 0;
  refusedLoader = getenv("ORBEL_REFUSE_LOADER");
  refusalsFile = getenv("ORBEL_COUNT_REFUSALS");
  refusedRead.Take(getenv("ORBEL_REFUSE_READ"));
  heldRead.Take(getenv("ORBEL_HOLD_READ"));
  fullDisk.Take(getenv("ORBEL_FULL_DISK"));
  slowRead = static_cast<useconds_t>(Number("ORBEL_SLOW_READ"));
  clockJumps = Number("ORBEL_JUMPY_CLOCK") != 0;
}

// Libraries allocate before the constructor above is called.
void ReadMemoryEnvironment() {
  if (isMemoryKnown || environ == nullptr) return;
  refusedAllocation = Number("ORBEL_REFUSE_MEMORY");
  refusesForGood = Number("ORBEL_REFUSE_MEMORY_FOR_GOOD") != 0;
  showSeen = showSeen || Number("ORBEL_REFUSE_MEMORY_AT_ONCE") != 0;
  isMemoryKnown = true;
}

// With the errno that the system would leave.
bool IsMemoryRefused() {
  ReadMemoryEnvironment();
  if (refusedAllocation == 0 || !showSeen) return false;
  const long count = ++allocations;
  if (count != refusedAllocation && !(refusesForGood && count > refusedAllocation)) return false;
  errno = ENOMEM;
  return true;
}

// For the test to read, whatever becomes of the program.
void CountInto(const char* path) {
  if (path == nullptr) return;
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND, 0600);
  if (file < 0 || write(file, ".", 1) != 1) abort();
  close(file);
}

void WaitWhileHeld(int file, long long end) {
  const char* const until = getenv("ORBEL_HOLD_UNTIL");
  if (until == nullptr || !heldRead.IsBefore(file, end)) return;
  static std::atomic<bool> isTold{false};
  if (!isTold.exchange(true)) CountInto(getenv("ORBEL_COUNT_HELD"));
  for (int look = 0; look < 6000 && access(until, F_OK) != 0; ++look) usleep(10'000);
}

// True when this read fails; what happens before any read happens in here.
bool IsRefused(int file, long long end) {
  if (slowRead > 0) usleep(slowRead);
  WaitWhileHeld(file, end);
  if (!refusedRead.IsBefore(file, end)) return false;
  errno = EIO;
  return true;
}

// Empty for a function that is not known by name.
std::string SymbolOf(void* (*body)(void*)) {
  Dl_info found{};
  if (dladdr(reinterpret_cast<const void*>(body), &found) == 0 || found.dli_sname == nullptr) return "";
  return found.dli_sname;
}

bool IsRefusedBody(void* (*body)(void*)) {
  const char* const text = getenv("ORBEL_REFUSE_BODY");
  return text != nullptr && SymbolOf(body).find(text) != std::string::npos;
}

bool IsRefusedLoader(void* (*body)(void*), const void* argument) {
  if (refusedLoader == nullptr || SymbolOf(body) != "FileLoaderThread") return false;
  const std::string song = static_cast<const FileLoaderData*>(argument)->SongNumber();
  return ("," + std::string(refusedLoader) + ",").find("," + song + ",") != std::string::npos;
}

// 0 when it is not refused, the reason otherwise.
int WhyRefused(const std::string& folder) {
  const char* const description = getenv("ORBEL_REFUSE_FOLDER");
  if (description == nullptr) return 0;
  const char* const colon = strrchr(description, ':');
  const std::string end(description, colon);
  const bool isIt =
      folder.size() >= end.size() && folder.compare(folder.size() - end.size(), std::string::npos, end) == 0;
  return isIt ? atoi(colon + 1) : 0;
}

long Jump() {
  static constexpr long kHour = 3600;
  return (static_cast<long>(++clockLooks * 7U % 11U) - 5) * kHour;
}

}  // namespace

extern "C" {

// The system's own, for whoever stands in front of them.
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* memory, std::size_t bytes);

void* malloc(std::size_t bytes) {
  return IsMemoryRefused() ? nullptr : __libc_malloc(bytes);
}

void* calloc(std::size_t count, std::size_t bytes) {
  return IsMemoryRefused() ? nullptr : __libc_calloc(count, bytes);
}

void* realloc(void* memory, std::size_t bytes) {
  return IsMemoryRefused() ? nullptr : __libc_realloc(memory, bytes);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
  static const auto real = Real<decltype(&pthread_create)>("pthread_create");
  const long count = ++threads;
  if (count == refusedThread || (refusesThreadsForGood && count > refusedThread) ||
      IsRefusedLoader(body, argument) || IsRefusedBody(body)) {
    CountInto(refusalsFile);
    return EAGAIN;
  }
  return real(thread, attributes, body, argument);
}

int stat(const char* path, struct stat* status) {
  static const auto real = Real<decltype(&stat)>("stat");
  showSeen = showSeen || strstr(path, "/show") != nullptr;
  return real(path, status);
}

DIR* opendir(const char* path) {
  static const auto real = Real<decltype(&opendir)>("opendir");
  const int reason = WhyRefused(path);
  if (reason == 0) return real(path);
  errno = reason;
  return nullptr;
}

ssize_t read(int file, void* buffer, std::size_t count) {
  static const auto real = Real<decltype(&read)>("read");
  if (IsRefused(file, lseek(file, 0, SEEK_CUR) + static_cast<long long>(count))) return -1;
  return real(file, buffer, count);
}

ssize_t pread(int file, void* buffer, std::size_t count, off_t offset) {
  static const auto real = Real<decltype(&pread)>("pread");
  if (IsRefused(file, offset + static_cast<long long>(count))) return -1;
  return real(file, buffer, count, offset);
}

ssize_t write(int file, const void* buffer, std::size_t count) {
  static const auto real = Real<decltype(&write)>("write");
  if (!fullDisk.IsIn(file)) return real(file, buffer, count);
  const long room = fullDisk.GetOffset() - bytesOnDisk;
  if (room <= 0) {
    errno = ENOSPC;
    return -1;
  }
  const ssize_t written = real(file, buffer, std::min(count, static_cast<std::size_t>(room)));
  if (written > 0) bytesOnDisk += written;
  return written;
}

int clock_gettime(clockid_t clock, struct timespec* now) {
  static const auto real = Real<decltype(&clock_gettime)>("clock_gettime");
  const int result = real(clock, now);
  if (clockJumps && clock == CLOCK_REALTIME) now->tv_sec += Jump();
  return result;
}

int gettimeofday(struct timeval* now, void* zone) {
  static const auto real = Real<int (*)(struct timeval*, void*)>("gettimeofday");
  const int result = real(now, zone);
  if (clockJumps) now->tv_sec += Jump();
  return result;
}

}  // extern "C"
