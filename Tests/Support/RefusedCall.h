#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <future>
#include <stdexcept>
#include <thread>

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

// From now on the kernel answers the first such call of this thread with `error`, and carries out
// those that follow. For a child process, too.
inline void refuseCallOnce(unsigned number, int error) {
  std::array filter{
      sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  // Before the filter, which starting a thread may not pass.
  std::promise<int> listening;
  std::thread([listener = listening.get_future(), error]() mutable {
    const int calls = listener.get();
    for (bool isFirst = true;; isFirst = false) {
      seccomp_notif call{};
      if (::ioctl(calls, SECCOMP_IOCTL_NOTIF_RECV, &call) != 0) return;
      seccomp_notif_resp answer{.id = call.id, .error = isFirst ? -error : 0};
      if (!isFirst) answer.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
      ::ioctl(calls, SECCOMP_IOCTL_NOTIF_SEND, &answer);
    }
  }).detach();
  const sock_fprog program{.len = filter.size(), .filter = filter.data()};
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  const auto listener =
      static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
  if (listener < 0) throw std::runtime_error("The system lets nobody answer calls.");
  listening.set_value(listener);
}

}  // namespace Fixture
