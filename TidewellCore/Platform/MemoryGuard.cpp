#include "TidewellCore/Platform/MemoryGuard.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <mutex>

namespace {

// The kernel takes no other value back than these two.
constexpr unsigned long undumpable = 0;
constexpr unsigned long dumpable = 1;

struct Found {
  int dumpability = 0;
  rlimit cores{};
};

// What holds for the whole process, and how it was before the first guard.
std::mutex mutex;
int guards = 0;
Found found;

rlimit limitOfCores() {
  rlimit limit{};
  ::getrlimit(RLIMIT_CORE, &limit);
  return limit;
}

void shut() {
  found = {.dumpability = ::prctl(PR_GET_DUMPABLE), .cores = limitOfCores()};
  MemoryGuard::refuseCoreDumps();
  ::prctl(PR_SET_DUMPABLE, undumpable);
}

void open() {
  ::setrlimit(RLIMIT_CORE, &found.cores);
  if (found.dumpability == static_cast<int>(dumpable)) ::prctl(PR_SET_DUMPABLE, dumpable);
}

}  // namespace

MemoryGuard::MemoryGuard() noexcept {
  const std::lock_guard lock(mutex);
  if (guards++ == 0) shut();
}

MemoryGuard::~MemoryGuard() {
  const std::lock_guard lock(mutex);
  if (--guards == 0) open();
}

void MemoryGuard::refuseCoreDumps() noexcept {
  const rlimit none{.rlim_cur = 0, .rlim_max = limitOfCores().rlim_max};
  ::setrlimit(RLIMIT_CORE, &none);
}
