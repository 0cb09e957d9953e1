// A drive for tests: shows a folder of the machine as a drive with FAT's rules,
// and with the faults that it is told to have. Needs FUSE.
//
// usage: tidewell-test-drive FOLDER MOUNTPOINT [OPTION=NUMBER]…

#define FUSE_USE_VERSION 31

#include <fuse.h>
#include <linux/fs.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "Tests/Drives/DriveFolder.h"

namespace {

using Fixture::DriveFolder;
using Fixture::DriveOptions;

constexpr std::int64_t blockSize = 4096;

DriveFolder& drive() { return *static_cast<DriveFolder*>(::fuse_get_context()->private_data); }

// Every question is asked of the drive, so that each spelling of a name is answered.
void* start(fuse_conn_info* connection, fuse_config* configuration) {
  configuration->entry_timeout = 0;
  configuration->attr_timeout = 0;
  configuration->negative_timeout = 0;
  configuration->nullpath_ok = 0;
  if (drive().options().writesLate) connection->want |= connection->capable & FUSE_CAP_WRITEBACK_CACHE;
  return &drive();
}

int getStatus(const char* path, struct stat* status, fuse_file_info*) { return drive().status(path, *status); }

int list(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info*, fuse_readdir_flags) {
  return drive().list(path, [&](const char* name) { fill(buffer, name, nullptr, 0, fuse_fill_dir_flags{}); });
}

int makeFolder(const char* path, mode_t) { return drive().makeFolder(path); }
int removeFolder(const char* path) { return drive().removeFolder(path); }
int remove(const char* path) { return drive().remove(path); }

int rename(const char* from, const char* to, unsigned flags) {
  const unsigned known = drive().options().lacksFreeRenaming ? 0 : RENAME_NOREPLACE;
  if ((flags & ~known) != 0) return -EINVAL;
  return drive().rename(from, to, flags == 0);
}

int setDates(const char* path, const timespec times[2], fuse_file_info*) {
  return drive().setDates(path, times[0], times[1]);
}

int resize(const char* path, off_t size, fuse_file_info*) { return drive().resize(path, size); }

// FAT knows no owners, no rights and no links.
int changeMode(const char*, mode_t mode, fuse_file_info*) { return (mode & 0777) == 0777 ? 0 : -EPERM; }
int changeOwner(const char*, uid_t, gid_t, fuse_file_info*) { return -EPERM; }
int makeLink(const char*, const char*) { return -EPERM; }
int makeNode(const char*, mode_t, dev_t) { return -EPERM; }

int keep(int file, fuse_file_info* info) {
  if (file < 0) return file;
  info->fh = static_cast<std::uint64_t>(file);
  return 0;
}
int numberOf(const fuse_file_info* info) { return static_cast<int>(info->fh); }

int create(const char* path, mode_t, fuse_file_info* info) {
  const bool readsBack = drive().options().writesLate;
  return keep(drive().create(path, readsBack ? O_RDWR | (info->flags & (O_EXCL | O_TRUNC)) : info->flags), info);
}
int open(const char* path, fuse_file_info* info) { return keep(drive().open(path, info->flags), info); }
int closeFile(const char*, fuse_file_info* info) { return ::close(numberOf(info)); }

int read(const char*, char* buffer, size_t count, off_t offset, fuse_file_info* info) {
  const ssize_t got = ::pread(numberOf(info), buffer, count, offset);
  return got < 0 ? -errno : static_cast<int>(got);
}

int write(const char*, const char* bytes, size_t count, off_t offset, fuse_file_info* info) {
  return drive().write(numberOf(info), bytes, count, offset);
}

int flush(const char*, int, fuse_file_info* info) { return drive().flush(numberOf(info)); }
int flushFolder(const char*, int, fuse_file_info*) { return drive().options().failsFlushes ? -EIO : 0; }

int capacity(const char*, struct statvfs* volume) {
  const DriveOptions& options = drive().options();
  const std::int64_t all = options.claimedCapacity > 0 ? options.claimedCapacity : options.capacity;
  volume->f_bsize = volume->f_frsize = blockSize;
  volume->f_blocks = static_cast<fsblkcnt_t>(all / blockSize);
  volume->f_bfree = volume->f_bavail =
      static_cast<fsblkcnt_t>(std::max<std::int64_t>(0, all - drive().used()) / blockSize);
  volume->f_namemax = 255;
  return 0;
}

fuse_operations operations() {
  fuse_operations known{};
  known.init = start;
  known.getattr = getStatus;
  known.readdir = list;
  known.mkdir = makeFolder;
  known.rmdir = removeFolder;
  known.unlink = remove;
  known.rename = rename;
  known.utimens = setDates;
  known.truncate = resize;
  known.chmod = changeMode;
  known.chown = changeOwner;
  known.symlink = makeLink;
  known.link = makeLink;
  known.mknod = makeNode;
  known.create = create;
  known.open = open;
  known.release = closeFile;
  known.read = read;
  known.write = write;
  known.fsync = flush;
  known.fsyncdir = flushFolder;
  known.statfs = capacity;
  return known;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // no drive outlives its test
  try {
    DriveFolder drive(argv[1], DriveOptions::parse({argv + 3, argv + argc}));
    std::vector<std::string> words{argv[0], "-f", "-s", "-o", "default_permissions,fsname=tidewell-test-drive",
                                   argv[2]};
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    const fuse_operations known = operations();
    return ::fuse_main(static_cast<int>(arguments.size()), arguments.data(), &known, &drive);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tidewell-test-drive: %s\n", error.what());
    return 2;
  }
}
