// Loaded into a program before the C library (LD_PRELOAD): makes one call of the
// system fail, as a disk does that is broken, full or forbidden. Told what to do
// by Fault::variables.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int shortCount = -1;  // instead of an error: half of what was asked

// "CALL:NUMBER:ERROR"; with a "+" behind the number all later calls fail as well.
struct Plan {
  char call[32]{};
  long number = 0;
  bool goesOn = false;
  int error = 0;  // or shortCount
  const char* below = nullptr;
  const char* mark = nullptr;
};

Plan readPlan() {
  Plan plan;
  const char* text = std::getenv("TIDEWELL_FAULT");
  plan.below = std::getenv("TIDEWELL_FAULT_BELOW");
  plan.mark = std::getenv("TIDEWELL_FAULT_MARK");
  char plus = 0;
  if (text == nullptr || plan.below == nullptr) return plan;
  if (std::sscanf(text, "%31[^:]:%ld:%d", plan.call, &plan.number, &plan.error) == 3) return plan;
  if (std::sscanf(text, "%31[^:]:%ld%c:%d", plan.call, &plan.number, &plus, &plan.error) == 4) plan.goesOn = true;
  return plan;
}

const Plan& plan() {
  static const Plan read = readPlan();
  return read;
}

bool isBelow(const char* path) {
  const std::size_t length = std::strlen(plan().below);
  return std::strncmp(path, plan().below, length) == 0;
}

bool isBelow(int file) {
  char name[64];
  char path[4096];
  std::snprintf(name, sizeof name, "/proc/self/fd/%d", file);
  const long length = ::syscall(SYS_readlinkat, AT_FDCWD, name, path, sizeof path - 1);
  if (length <= 0) return false;
  path[length] = 0;
  return isBelow(path);
}

bool isBelow(int folder, const char* path) {
  if (path == nullptr || path[0] == 0) return isBelow(folder);
  return path[0] == '/' || folder == AT_FDCWD ? isBelow(path) : isBelow(folder);
}

void leaveMark() {
  if (plan().mark == nullptr) return;
  const long file = ::syscall(SYS_openat, AT_FDCWD, plan().mark, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (file >= 0) ::syscall(SYS_close, file);
}

// Whether this is the call that is to fail; `errno` is set then.
template <typename... Place>
bool strikes(const char* call, Place... place) {
  static std::atomic<long> count{0};
  if (plan().number == 0 || std::strcmp(plan().call, call) != 0) return false;
  const int before = errno;
  const bool isMeant = isBelow(place...);
  errno = before;
  if (!isMeant) return false;
  const long number = ++count;
  if (number != plan().number && !(plan().goesOn && number > plan().number)) return false;
  leaveMark();
  errno = plan().error == shortCount ? before : plan().error;
  return true;
}

bool isShort() { return plan().error == shortCount; }

template <typename Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// Defines NAME as a call that may fail; ORIGINAL(…) is the real one.
#define ORIGINAL(name)                                            \
  (*[] {                                                          \
    static auto* const found = original<decltype(::name)>(#name); \
    return found;                                                 \
  }())

extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = va_arg(rest, mode_t);
  va_end(rest);
  return strikes("open", AT_FDCWD, path) ? -1 : ORIGINAL(open)(path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = va_arg(rest, mode_t);
  va_end(rest);
  return strikes("open", AT_FDCWD, path) ? -1 : ORIGINAL(open64)(path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = va_arg(rest, mode_t);
  va_end(rest);
  return strikes("open", folder, path) ? -1 : ORIGINAL(openat)(folder, path, flags, mode);
}
long syscall(long number, ...) noexcept {
  va_list rest;
  va_start(rest, number);
  long a[6];
  for (long& argument : a) argument = va_arg(rest, long);
  va_end(rest);
  if (number == SYS_openat2 && strikes("open", static_cast<int>(a[0]), reinterpret_cast<const char*>(a[1]))) return -1;
  return ORIGINAL(syscall)(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}
int close(int file) {
  const bool fails = strikes("close", file);
  const int error = errno;
  const int result = ORIGINAL(close)(file);
  if (fails) errno = error;
  return fails ? -1 : result;
}
ssize_t read(int file, void* buffer, size_t count) {
  if (strikes("read", file)) {
    if (!isShort()) return -1;
    count = count / 2 + 1;
  }
  return ORIGINAL(read)(file, buffer, count);
}
ssize_t pread64(int file, void* buffer, size_t count, off64_t offset) {
  if (strikes("pread", file)) {
    if (!isShort()) return -1;
    count = count / 2 + 1;
  }
  return ORIGINAL(pread64)(file, buffer, count, offset);
}
ssize_t pread(int file, void* buffer, size_t count, off_t offset) { return pread64(file, buffer, count, offset); }
ssize_t write(int file, const void* buffer, size_t count) {
  if (strikes("write", file)) {
    if (!isShort()) return -1;
    count = count / 2 + 1;
  }
  return ORIGINAL(write)(file, buffer, count);
}
ssize_t pwrite64(int file, const void* buffer, size_t count, off64_t offset) {
  if (strikes("write", file)) {
    if (!isShort()) return -1;
    count = count / 2 + 1;
  }
  return ORIGINAL(pwrite64)(file, buffer, count, offset);
}
ssize_t pwrite(int file, const void* buffer, size_t count, off_t offset) {
  return pwrite64(file, buffer, count, offset);
}
ssize_t copy_file_range(int from, off64_t* fromOffset, int to, off64_t* toOffset, size_t count, unsigned flags) {
  if (strikes("copy_file_range", to)) {
    if (!isShort()) return -1;
    count = count / 2 + 1;
  }
  return ORIGINAL(copy_file_range)(from, fromOffset, to, toOffset, count, flags);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
  return strikes("rename", toFolder, to) ? -1 : ORIGINAL(renameat2)(fromFolder, from, toFolder, to, flags);
}
int rename(const char* from, const char* to) noexcept {
  return strikes("rename", AT_FDCWD, to) ? -1 : ORIGINAL(rename)(from, to);
}
int mkdir(const char* path, mode_t mode) noexcept {
  return strikes("mkdir", AT_FDCWD, path) ? -1 : ORIGINAL(mkdir)(path, mode);
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
  return strikes("mkdir", folder, path) ? -1 : ORIGINAL(mkdirat)(folder, path, mode);
}
int fsync(int file) { return strikes("fsync", file) ? -1 : ORIGINAL(fsync)(file); }
int fdatasync(int file) { return strikes("fsync", file) ? -1 : ORIGINAL(fdatasync)(file); }
int syncfs(int file) noexcept { return strikes("fsync", file) ? -1 : ORIGINAL(syncfs)(file); }
int statvfs64(const char* path, struct statvfs64* status) noexcept {
  return strikes("statvfs", AT_FDCWD, path) ? -1 : ORIGINAL(statvfs64)(path, status);
}
int statvfs(const char* path, struct statvfs* status) noexcept {
  return strikes("statvfs", AT_FDCWD, path) ? -1 : ORIGINAL(statvfs)(path, status);
}
int fstatfs(int file, struct statfs* status) noexcept {
  return strikes("statvfs", file) ? -1 : ORIGINAL(fstatfs)(file, status);
}
int unlink(const char* path) noexcept { return strikes("unlink", AT_FDCWD, path) ? -1 : ORIGINAL(unlink)(path); }
int rmdir(const char* path) noexcept { return strikes("unlink", AT_FDCWD, path) ? -1 : ORIGINAL(rmdir)(path); }
int unlinkat(int folder, const char* path, int flags) noexcept {
  return strikes("unlink", folder, path) ? -1 : ORIGINAL(unlinkat)(folder, path, flags);
}
int utimensat(int folder, const char* path, const struct timespec times[2], int flags) noexcept {
  return strikes("utimensat", folder, path) ? -1 : ORIGINAL(utimensat)(folder, path, times, flags);
}
int futimens(int file, const struct timespec times[2]) noexcept {
  return strikes("utimensat", file) ? -1 : ORIGINAL(futimens)(file, times);
}
int stat(const char* path, struct stat* status) noexcept {
  return strikes("stat", AT_FDCWD, path) ? -1 : ORIGINAL(stat)(path, status);
}
int lstat(const char* path, struct stat* status) noexcept {
  return strikes("stat", AT_FDCWD, path) ? -1 : ORIGINAL(lstat)(path, status);
}
int fstat(int file, struct stat* status) noexcept { return strikes("stat", file) ? -1 : ORIGINAL(fstat)(file, status); }
int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  return strikes("stat", folder, path) ? -1 : ORIGINAL(fstatat)(folder, path, status, flags);
}
int stat64(const char* path, struct stat64* status) noexcept {
  return strikes("stat", AT_FDCWD, path) ? -1 : ORIGINAL(stat64)(path, status);
}
int lstat64(const char* path, struct stat64* status) noexcept {
  return strikes("stat", AT_FDCWD, path) ? -1 : ORIGINAL(lstat64)(path, status);
}
int fstat64(int file, struct stat64* status) noexcept {
  return strikes("stat", file) ? -1 : ORIGINAL(fstat64)(file, status);
}
struct dirent* readdir(DIR* folder) {
  return strikes("readdir", ::dirfd(folder)) ? nullptr : ORIGINAL(readdir)(folder);
}
struct dirent64* readdir64(DIR* folder) {
  return strikes("readdir", ::dirfd(folder)) ? nullptr : ORIGINAL(readdir64)(folder);
}

}  // extern "C"
