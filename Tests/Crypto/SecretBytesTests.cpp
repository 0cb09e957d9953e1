#include "TidewellCore/Crypto/SecretBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

// What watched memory held at the moment it was given back.
struct Watch {
  const void* memory = nullptr;
  std::size_t size = 0;
  bool wasFreed = false;
  bool wasZero = false;

  void freed(const void* freed) {
    if (memory == nullptr || freed != memory) return;
    const auto* bytes = static_cast<const volatile unsigned char*>(memory);
    wasZero = true;
    for (std::size_t i = 0; i < size; ++i) wasZero = wasZero && bytes[i] == 0;
    wasFreed = true;
    memory = nullptr;
  }
};

Watch watch;

void watchOver(const void* memory, std::size_t size) { watch = {.memory = memory, .size = size}; }

}  // namespace

// This program's own allocation, so that freed memory can be looked at while it is still there.
void* operator new(std::size_t size) {
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
// The standard library's sorting buffers come from here and are freed below like all others.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size == 0 ? 1 : size); }
void operator delete(void* memory) noexcept {
  watch.freed(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

TEST(SecretBytes, TheTestSeesFreedMemory) {
  std::allocator<std::uint8_t> allocator;
  std::uint8_t* memory = allocator.allocate(64);
  std::fill_n(memory, 64, std::uint8_t{0x5A});
  watchOver(memory, 64);
  allocator.deallocate(memory, 64);
  EXPECT_TRUE(watch.wasFreed);
  EXPECT_FALSE(watch.wasZero) << "an ordinary allocator wipes nothing";
}

TEST(SecretBytes, TheAllocatorWipesWhatItGivesBack) {
  WipingAllocator<std::uint32_t> allocator;
  std::uint32_t* memory = allocator.allocate(16);
  std::fill_n(memory, 16, 0x5A5A5A5Au);
  watchOver(memory, 64);
  allocator.deallocate(memory, 16);
  EXPECT_TRUE(watch.wasFreed);
  EXPECT_TRUE(watch.wasZero);
}

TEST(SecretBytes, AKeyIsWipedWhenItGoes) {
  {
    const SecretBytes key(32, 0x5A);
    watchOver(key.data(), key.capacity());
  }
  EXPECT_TRUE(watch.wasFreed);
  EXPECT_TRUE(watch.wasZero);
}

TEST(SecretBytes, AKeyThatWasCutIsWipedWhole) {
  {
    SecretBytes key(64, 0x5A);
    key.resize(1);
    watchOver(key.data(), 64);
  }
  EXPECT_TRUE(watch.wasFreed);
  EXPECT_TRUE(watch.wasZero);
}

TEST(SecretBytes, AKeyThatGrewLeavesNoCopyBehind) {
  SecretBytes key(32, 0x5A);
  watchOver(key.data(), key.capacity());
  key.resize(1000);
  EXPECT_TRUE(watch.wasFreed);
  EXPECT_TRUE(watch.wasZero);
}

TEST(SecretBytes, AReplacedKeyLeavesNoCopyBehind) {
  SecretBytes key(32, 0x5A);
  watchOver(key.data(), key.capacity());
  key = SecretBytes(48, 0x41);
  EXPECT_TRUE(watch.wasFreed);
  EXPECT_TRUE(watch.wasZero);
}

}  // namespace
