#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "TidewellCore/Crypto/CryptoShim.h"

// Memory that is overwritten before it is given back.
template <typename T>
struct WipingAllocator {
  using value_type = T;

  WipingAllocator() = default;
  template <typename Other>
  explicit WipingAllocator(const WipingAllocator<Other>&) {}

  T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
  void deallocate(T* memory, std::size_t count) {
    tw_wipe(memory, count * sizeof(T));
    std::allocator<T>().deallocate(memory, count);
  }

  bool operator==(const WipingAllocator&) const = default;
};

// A key or a password: bytes that leave no copy behind in freed memory.
using SecretBytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

// Overwrites a secret that is needed no more, and leaves it empty.
inline void wipe(SecretBytes& secret) { SecretBytes().swap(secret); }
