#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace Fixture {

// What a user without any rights gets: calls `work` in a child process that has given up the
// superuser's rights, if it had them, and returns the small number that `work` returned.
// 255 stands for an exception. Permissions bind such a child even when the tests run as root.
template <typename Work>
int asUnprivilegedUser(Work work) {
  constexpr unsigned nobody = 65534;
  constexpr int failed = 255;
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("No child process could be started.");
  if (child == 0) {
    if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0)) {
      ::_exit(failed);
    }
    int result = failed;
    try {
      result = work();
    } catch (...) {
    }
    ::_exit(result);
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
    throw std::runtime_error("The child process did not end by itself.");
  }
  return WEXITSTATUS(status);
}

}  // namespace Fixture
