#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Fixture {

// What a drive of the tests takes, and what goes wrong on it. As it comes it is a stick formatted with FAT.
struct DriveOptions {
  bool takesEveryName = false;  // any bytes but "/", in any number up to 255
  bool stripsDots = false;      // leaves dots at a name's end out without a word, instead of refusing them
  bool ignoresCase = true;
  bool composesNames = false;       // an accent's composed and decomposed form are one name
  bool ignoresWidth = false;        // a letter's wide form, and other forms of compatibility, are the letter
  bool refusesDates = false;        // before 1980 and after 2107; they are clamped otherwise
  bool lacksFreeRenaming = false;   // cannot be asked to rename without replacing
  bool losesWhatIsTooMuch = false;  // takes what is beyond its capacity, loses it, and says so when the file is flushed
  bool writesLate = false;  // the system keeps what is written, so that its loss is met by the flush of the whole drive
  bool failsFlushes = false;                   // with EIO, every one
  std::int64_t flushTakes = 0;                 // milliseconds, of one file
  std::int64_t largestFile = (1LL << 32) - 1;  // bytes
  std::int64_t capacity = 1LL << 40;           // bytes of all files together
  std::int64_t claimedCapacity = 0;            // what it says of itself; 0: the truth

  bool operator==(const DriveOptions&) const = default;

  // As arguments of the drive's program, and back. Throws std::invalid_argument for any it does not know.
  std::vector<std::string> arguments() const;
  static DriveOptions parse(const std::vector<std::string>& arguments);
};

}  // namespace Fixture
