#include "host/memory/memory_reserve.h"

#include <functional>

namespace orbel::host {

MemoryReserve::Piece* MemoryReserve::First_() noexcept {
  auto* const first = reinterpret_cast<Piece*>(bytes_);
  if (first->bytes == 0) *first = {kBytes - sizeof(Piece), false};
  return first;
}

MemoryReserve::Piece* MemoryReserve::Next_(Piece* piece) noexcept {
  std::byte* const behind = reinterpret_cast<std::byte*>(piece + 1) + piece->bytes;
  return behind == bytes_ + kBytes ? nullptr : reinterpret_cast<Piece*>(behind);
}

void MemoryReserve::JoinFreeBehind_(Piece* piece) noexcept {
  for (Piece* next = Next_(piece); next != nullptr && !next->isTaken; next = Next_(piece)) {
    piece->bytes += sizeof(Piece) + next->bytes;
  }
}

void MemoryReserve::Split_(Piece* piece, std::size_t bytes) noexcept {
  if (piece->bytes - bytes < 2 * sizeof(Piece)) return;
  auto* const rest = reinterpret_cast<Piece*>(reinterpret_cast<std::byte*>(piece + 1) + bytes);
  *rest = {piece->bytes - bytes - sizeof(Piece), false};
  piece->bytes = bytes;
}

void* MemoryReserve::Allocate(std::size_t bytes) noexcept {
  if (bytes > kBytes) return nullptr;  // before it is rounded up
  // Never 0, which says that there is nothing here yet.
  const std::size_t whole = (bytes / sizeof(Piece) + 1) * sizeof(Piece);
  const std::lock_guard<std::mutex> lock(mutex_);
  for (Piece* piece = First_(); piece != nullptr; piece = Next_(piece)) {
    if (piece->isTaken) continue;
    JoinFreeBehind_(piece);
    if (piece->bytes < whole) continue;
    Split_(piece, whole);
    piece->isTaken = true;
    return piece + 1;
  }
  return nullptr;
}

void MemoryReserve::Free(void* memory) noexcept {
  const std::lock_guard<std::mutex> lock(mutex_);
  (static_cast<Piece*>(memory) - 1)->isTaken = false;
}

bool MemoryReserve::Holds(const void* memory) const noexcept {
  const auto* const byte = static_cast<const std::byte*>(memory);
  return !std::less<>{}(byte, bytes_) && std::less<>{}(byte, bytes_ + kBytes);
}

std::size_t MemoryReserve::SizeOf(const void* memory) noexcept {
  return (static_cast<const Piece*>(memory) - 1)->bytes;
}

}  // namespace orbel::host
