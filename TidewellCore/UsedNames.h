#pragma once

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

// The names that are taken in one place, known by their keys. None is ever freed.
class UsedNames {
 public:
  UsedNames() = default;
  explicit UsedNames(const std::set<std::string>& keys) : keys_(keys.begin(), keys.end()) {}

  bool contains(std::string_view name) const;
  // False when it is taken already.
  bool take(std::string_view name);
  // The first variant of a name that is free, which is taken then. The
  // ten-thousandth of one name is found as soon as the second.
  std::string uniquify(std::string_view desired);
  // The same, one after the other, until `take` takes one: a name may be free
  // here and taken where it is needed, by what came since or by a drive's own rules.
  template <typename Take>
  std::string uniquifyUntil(std::string_view desired, Take take) {
    for (;;) {
      std::string name = uniquify(desired);
      if (take(name)) return name;
    }
  }

 private:
  std::unordered_set<std::string> keys_;
  // The number below which no variant of a family is free.
  std::unordered_map<std::string, int> next_;
};
