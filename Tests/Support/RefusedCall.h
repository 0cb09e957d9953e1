#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <array>
#include <cstddef>
#include <stdexcept>

namespace Fixture {

// From now on, and for good, the kernel answers a call of this process with `error`,
// of a call that takes flags as its third argument only one without any. For a
// child process, as of EXPECT_EXIT.
inline void refuseCall(unsigned number, unsigned error, bool takesFlags = false) {
  const unsigned flagsThatCount = takesFlags ? ~0U : 0;
  std::array filter{
      sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 3),
      sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
      sock_filter BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, flagsThatCount, 1, 0),
      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program{.len = filter.size(), .filter = filter.data()};
  const bool isTaken =
      ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
  if (!isTaken) throw std::runtime_error("The system takes no filter of its calls.");
}

}  // namespace Fixture
