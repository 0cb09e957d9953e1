#pragma once

#include <filesystem>

#include "TidewellCore/Platform/Bytes.h"

// Whom a new file is for.
enum class FileAccess {
  byUmask,    // everybody whom the user's settings allow
  ownerOnly,  // this user alone (mode 0600), whatever the settings
};

// Owns one open file. Failures are thrown as std::filesystem::filesystem_error with the file's path.
class FileDescriptor {
 public:
  // Opens a regular file; a link, a folder or a device is refused without waiting for it.
  static FileDescriptor openForReading(const std::filesystem::path& path);
  // Makes a new, empty file; whatever file or link stood there is replaced.
  static FileDescriptor create(const std::filesystem::path& path, FileAccess access = FileAccess::byUmask);

  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  // Fills as much of `buffer` as the file still has; fewer bytes mean its end.
  std::size_t read(std::span<std::uint8_t> buffer);
  void write(ByteView bytes);
  void seek(std::int64_t offset);
  std::int64_t size() const;
  // Throws with EFBIG when the file system takes no file of `size` bytes: to be
  // found out before the first of them is written.
  void requireLength(std::int64_t size) const;
  // Closes it and reports what a full or broken disk kept back until now.
  void close();

  int number() const { return number_; }
  const std::filesystem::path& path() const { return path_; }
  // Throws the failure that errno tells of.
  [[noreturn]] void fail(const char* what) const;

 private:
  FileDescriptor(int number, std::filesystem::path path) : number_(number), path_(std::move(path)) {}

  int number_ = -1;
  std::filesystem::path path_;
};
