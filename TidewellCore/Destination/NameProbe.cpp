#include "TidewellCore/Destination/NameProbe.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;

// One of each kind that some drive refuses, or takes and calls otherwise.
constexpr std::array<const char*, 10> trials{"a?", "a*", "a\"", "a<", "a>", "a|", "dot.", "blank ", "con", "nul.txt"};
constexpr const char* ordinary = "ordinary";

// A full or broken drive, or a moment's failure, is no reason for other names.
bool isOfDrive(const std::error_code& code) {
  constexpr std::array codes{EIO,   ENOSPC, EDQUOT, EROFS,  ENOMEM, ENXIO,     ENODEV,
                             EINTR, EAGAIN, EMFILE, ENFILE, ESTALE, ETIMEDOUT, ENOTCONN};
  return std::ranges::find(codes, code.value()) != codes.end();
}

bool takes(const fs::path& folder, const char* name) {
  try {
    Files::makeFolder(folder / name);
    return true;
  } catch (const fs::filesystem_error& error) {
    if (isOfDrive(error.code())) throw;
    Files::makeFolder(folder / ordinary);
    return false;
  }
}

// A drive may leave a dot out without a word.
bool areAllListed(const fs::path& folder) {
  const std::vector<Files::Entry> entries = Files::list(folder);
  return std::ranges::all_of(
      trials, [&](const char* name) { return std::ranges::find(entries, name, &Files::Entry::name) != entries.end(); });
}

NameForm formIn(const fs::path& probe) {
  Files::makeFolder(probe);
  const bool areTaken = std::ranges::all_of(trials, [&](const char* name) { return takes(probe, name); });
  return areTaken && areAllListed(probe) ? NameForm::plain : NameForm::portable;
}

// Removes the trials at its end, and gives the folder its date back.
class Traces {
 public:
  explicit Traces(const fs::path& folder) : folder_(folder), date_(fs::last_write_time(folder)) {}
  ~Traces() {
    try {
      Files::removeTree(probe_);
    } catch (const fs::filesystem_error&) {
      // A later export removes what this one cannot.
    }
    std::error_code ignored;
    fs::last_write_time(folder_, date_, ignored);
  }
  Traces(const Traces&) = delete;
  Traces& operator=(const Traces&) = delete;

  const fs::path& probe() const { return probe_; }

 private:
  fs::path folder_;
  fs::path probe_ = folder_ / Files::partialName();
  fs::file_time_type date_;
};

}  // namespace

NameForm NameProbe::formFor(const fs::path& folder) { return formIn(Traces(folder).probe()); }
