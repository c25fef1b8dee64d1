#include "host/memory/allocation.h"

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include "host/memory/memory_reserve.h"

namespace orbel::host {

namespace {

constinit MemoryReserve reserve;
// Written while there is one thread, before `main` and at its beginning.
constinit bool isReserveForAll = true;
constinit thread_local unsigned smallFromReserve = 0;

// What the system would do, or what stands in front of it.
struct System {
  decltype(&std::malloc) allocate;
  decltype(&std::calloc) allocateZeroed;
  decltype(&std::realloc) resize;
  decltype(&std::free) release;
  decltype(&::malloc_usable_size) sizeOf;
};
constinit System found{};
constinit bool isLooking = false;

template <typename Function>
void Find(const char* name, Function* function) {
  *function = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

// nullptr while they are being looked for, which may allocate. The first allocation of a process comes long
// before its second thread.
const System* TheSystem() {
  if (found.release != nullptr) return &found;
  if (isLooking) return nullptr;
  isLooking = true;
  Find("malloc", &found.allocate);
  Find("calloc", &found.allocateZeroed);
  Find("realloc", &found.resize);
  Find("malloc_usable_size", &found.sizeOf);
  Find("free", &found.release);
  return &found;
}

void* FromSystem(std::size_t bytes) {
  const System* const system = TheSystem();
  return system == nullptr ? nullptr : system->allocate(bytes);
}

void* FromSystemOrReserve(std::size_t bytes) {
  void* const memory = FromSystem(bytes);
  return memory != nullptr ? memory : reserve.Allocate(bytes);
}

void* ZeroedFromReserve(std::size_t count, std::size_t bytes) {
  std::size_t all = 0;
  if (__builtin_mul_overflow(count, bytes, &all)) return nullptr;
  void* const memory = reserve.Allocate(all);
  return memory == nullptr ? nullptr : std::memset(memory, 0, all);
}

void Release(void* memory) {
  if (reserve.Holds(memory)) {
    reserve.Free(memory);
  } else if (memory != nullptr) {
    TheSystem()->release(memory);
  }
}

bool HasReserve(std::size_t bytes) {
  return isReserveForAll || (smallFromReserve > 0 && bytes <= SmallPiecesFromReserve::kMost);
}

void* Move(void* memory, std::size_t oldBytes, std::size_t bytes) {
  void* const moved = FromSystemOrReserve(bytes);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, memory, std::min(oldBytes, bytes));
  Release(memory);
  return moved;
}

void* Resize(void* memory, std::size_t bytes) {
  if (reserve.Holds(memory) && bytes == 0) {  // as the system does
    reserve.Free(memory);
    return nullptr;
  }
  if (reserve.Holds(memory)) return Move(memory, MemoryReserve::SizeOf(memory), bytes);
  void* const resized = TheSystem()->resize(memory, bytes);
  // Of nothing, the system has given `memory` back.
  if (resized != nullptr || bytes == 0) return resized;
  return Move(memory, TheSystem()->sizeOf(memory), bytes);
}

}  // namespace

// A child of a fork has this thread alone, and a lock that another one held would never be given up in it.
void RefuseWhereThereIsNoMemory() noexcept {
  ::pthread_atfork([] { reserve.Lock(); }, [] { reserve.Unlock(); }, [] { reserve.Unlock(); });
  isReserveForAll = false;
}

SmallPiecesFromReserve::SmallPiecesFromReserve() noexcept {
  ++smallFromReserve;
}

SmallPiecesFromReserve::~SmallPiecesFromReserve() {
  --smallFromReserve;
}

}  // namespace orbel::host

extern "C" {

void* malloc(std::size_t bytes) noexcept {
  return orbel::host::FromSystemOrReserve(bytes);
}

void* calloc(std::size_t count, std::size_t bytes) noexcept {
  const orbel::host::System* const system = orbel::host::TheSystem();
  void* const memory = system == nullptr ? nullptr : system->allocateZeroed(count, bytes);
  return memory != nullptr ? memory : orbel::host::ZeroedFromReserve(count, bytes);
}

void* realloc(void* memory, std::size_t bytes) noexcept {
  if (memory == nullptr) return orbel::host::FromSystemOrReserve(bytes);
  return orbel::host::Resize(memory, bytes);
}

void free(void* memory) noexcept {
  orbel::host::Release(memory);
}

std::size_t malloc_usable_size(void* memory) noexcept {
  using orbel::host::MemoryReserve;
  return orbel::host::reserve.Holds(memory) ? MemoryReserve::SizeOf(memory)
                                            : orbel::host::TheSystem()->sizeOf(memory);
}

}  // extern "C"

void* operator new(std::size_t bytes) {
  void* memory = orbel::host::FromSystem(bytes);
  if (memory == nullptr && orbel::host::HasReserve(bytes)) memory = orbel::host::reserve.Allocate(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  orbel::host::Release(memory);
}

void operator delete(void* memory, std::size_t /*bytes*/) noexcept {
  orbel::host::Release(memory);
}
