#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Why a file could not be copied, in the order in which ties are broken.
enum class FailureReason {
  missing,        // the backup lists it and does not hold it
  cutShort,       // the backup holds only a part of it
  keyMissing,     // the backup holds no key that opens it
  undecryptable,  // it has a key that does not fit its cipher
  unreadable,     // the backup's disk does not give it
  unwritable,     // the destination does not take it
  tooLarge,       // the destination's file system takes no file of that size
  placeTaken,     // something that is no file came to stand in its place
  other
};

// A file that is not in the export although it was asked for.
struct CopyFailure {
  std::string name;  // the file name that the export would have given it
  std::string chat;  // the chat's title
  FailureReason reason = FailureReason::other;

  bool operator==(const CopyFailure&) const = default;
};

// Thrown by who knows the reason at once.
struct CopyError : std::exception {
  explicit CopyError(FailureReason why) : reason(why) {}
  const char* what() const noexcept override;

  FailureReason reason;
};

namespace CopyFailures {

// Why a file failed that was read at `source`, or made of it, and written
// somewhere else. What decrypting reports is `undecryptable`.
FailureReason reasonOf(const std::exception& error, const std::filesystem::path& source);

inline constexpr std::array allReasons{
    FailureReason::missing,       FailureReason::cutShort,   FailureReason::keyMissing,
    FailureReason::undecryptable, FailureReason::unreadable, FailureReason::unwritable,
    FailureReason::tooLarge,      FailureReason::placeTaken, FailureReason::other};

// A reason in English.
struct Words {
  std::string_view sentence;  // of one file
  std::string_view one;       // a headline: "1 file is missing from the backup"
  std::string_view many;      // the same with "%lld" for the number of files
};
const Words& words(FailureReason reason);

// What went wrong most.
struct Headline {
  FailureReason reason = FailureReason::other;
  std::int64_t count = 0;

  bool operator==(const Headline&) const = default;
};
// Absent when nothing went wrong.
std::optional<Headline> headline(const std::vector<CopyFailure>& failures);

}  // namespace CopyFailures
