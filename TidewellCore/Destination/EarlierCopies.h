#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "TidewellCore/Destination/DestinationIndex.h"

// The files of one folder as copies that earlier exports made of media, each of
// which is taken once. In any number they are found without being tried in turn.
class EarlierCopies {
 public:
  using IsTaken = std::function<bool(const DestinationIndex::FileEntry& file)>;

  // Keeps nothing of `files`, and leaves out those that were taken before.
  explicit EarlierCopies(const DestinationIndex::Files& files, const IsTaken& isTaken = {});

  // Takes the copy of that very name, when it has this size and was not taken.
  std::optional<std::string> takeItself(std::string_view desired, std::int64_t size);
  // Takes the copy of a medium: the same, else of the variants of `desired` the first that has
  // this size and was not taken. A negative size is unknown and has no copy.
  std::optional<std::string> take(std::string_view desired, std::int64_t size);

 private:
  struct Copy {
    std::string name;
    std::int64_t size = 0;
    bool isTaken = false;
  };

  std::optional<std::string> takeVariant(const std::string& place);

  std::unordered_map<std::string, Copy> byKey_;
  // By family, digits of the number and size; those found taken are left out.
  std::unordered_map<std::string, std::map<int, Copy*>> variants_;
  int mostDigits_ = 0;
};
