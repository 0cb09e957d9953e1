#pragma once

// Keeps what this process has in its memory to itself: while one of these lives,
// no core dump is written and no process of the same user may look in (Linux also
// shuts /proc/PID to them, from outside; a desktop's services that look there for
// whom they serve cannot tell then, so hold it no longer than keys are in use).
// Counted for the process: the last one to go leaves things as the first found them.
// A system that refuses is let go on. Any thread.
class MemoryGuard {
 public:
  MemoryGuard() noexcept;
  ~MemoryGuard();
  MemoryGuard(const MemoryGuard&) noexcept : MemoryGuard() {}
  MemoryGuard& operator=(const MemoryGuard&) noexcept { return *this; }

  // Of the two the one that nobody outside notices, for the rest of the process's
  // life. Before the first guard.
  static void refuseCoreDumps() noexcept;
};
