#include "TidewellCore/CopyFailure.h"

#include <algorithm>
#include <system_error>

#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

using CopyFailures::Words;

// In the order of the reasons.
constexpr std::array<Words, CopyFailures::allReasons.size()> table{
    {{.sentence = "It is missing from the backup.",
      .one = "1 file is missing from the backup",
      .many = "%lld files are missing from the backup"},
     {.sentence = "It is cut short in the backup.",
      .one = "1 file is cut short in the backup",
      .many = "%lld files are cut short in the backup"},
     {.sentence = "The backup holds no key that opens it.",
      .one = "1 file has no key in the backup that opens it",
      .many = "%lld files have no key in the backup that opens them"},
     {.sentence = "It could not be decrypted.",
      .one = "1 file could not be decrypted",
      .many = "%lld files could not be decrypted"},
     {.sentence = "It could not be read from the backup.",
      .one = "1 file could not be read from the backup",
      .many = "%lld files could not be read from the backup"},
     {.sentence = "It could not be written into the destination folder.",
      .one = "1 file could not be written into the destination folder",
      .many = "%lld files could not be written into the destination folder"},
     {.sentence = "It is too large for the drive.",
      .one = "1 file is too large for the drive",
      .many = "%lld files are too large for the drive"},
     {.sentence = "Something else stands in its place.",
      .one = "1 file found something else in its place",
      .many = "%lld files found something else in their places"},
     {.sentence = "It could not be copied.",
      .one = "1 file could not be copied",
      .many = "%lld files could not be copied"}}};

FailureReason reasonOfReading(const std::error_code& code) {
  const bool isGone = code == std::errc::no_such_file_or_directory || code == std::errc::not_a_directory;
  return isGone ? FailureReason::missing : FailureReason::unreadable;
}

FailureReason reasonOfWriting(const std::error_code& code) {
  if (code == std::errc::file_too_large) return FailureReason::tooLarge;
  return code == std::errc::file_exists ? FailureReason::placeTaken : FailureReason::unwritable;
}

}  // namespace

FailureReason CopyFailures::reasonOf(const std::exception& error, const fs::path& source) {
  if (const auto* known = dynamic_cast<const CopyError*>(&error)) return known->reason;
  if (const auto* file = dynamic_cast<const fs::filesystem_error*>(&error)) {
    return file->path1() == source ? reasonOfReading(file->code()) : reasonOfWriting(file->code());
  }
  const bool isOurs = dynamic_cast<const TidewellError*>(&error) != nullptr;
  return isOurs ? FailureReason::undecryptable : FailureReason::other;
}

const char* CopyError::what() const noexcept { return CopyFailures::words(reason).sentence.data(); }

const Words& CopyFailures::words(FailureReason reason) { return table[static_cast<std::size_t>(reason)]; }

std::optional<CopyFailures::Headline> CopyFailures::headline(const std::vector<CopyFailure>& failures) {
  std::optional<Headline> most;
  for (const FailureReason reason : allReasons) {
    const std::int64_t count = std::ranges::count(failures, reason, &CopyFailure::reason);
    if (count > (most ? most->count : 0)) most = {.reason = reason, .count = count};
  }
  return most;
}
