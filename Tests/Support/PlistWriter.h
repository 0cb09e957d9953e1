#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Tests/Support/Bytes.h"

namespace Fixture {

struct PlistValue;

using PlistArray = std::vector<PlistValue>;
// Keys keep the order in which they are given.
using PlistDictionary = std::vector<std::pair<std::string, PlistValue>>;

struct PlistDate {
  double secondsSince2001 = 0;
};

// A reference of a keyed archive.
struct PlistUID {
  std::uint64_t value = 0;
};

// One property-list value. Converts from what it can hold, so that nested lists read like the file.
struct PlistValue {
  std::variant<PlistDictionary, PlistArray, std::string, std::int64_t, std::uint64_t, bool, double, PlistDate, Bytes,
               PlistUID>
      value;

  PlistValue(PlistDictionary dictionary) : value(std::move(dictionary)) {}
  PlistValue(PlistArray array) : value(std::move(array)) {}
  PlistValue(std::string text) : value(std::move(text)) {}
  PlistValue(const char* text) : value(std::string(text)) {}
  PlistValue(bool flag) : value(flag) {}
  PlistValue(double real) : value(real) {}
  PlistValue(PlistDate date) : value(date) {}
  PlistValue(Bytes data) : value(std::move(data)) {}
  PlistValue(PlistUID uid) : value(uid) {}
  PlistValue(std::signed_integral auto number) : value(std::int64_t{number}) {}
  PlistValue(std::unsigned_integral auto number) : value(std::uint64_t{number}) {}
};

// Sets `key` to `value`, in its old place when it is there already.
void setKey(PlistDictionary& dictionary, const std::string& key, PlistValue value);

// Removes `key` when it is there.
void removeKey(PlistDictionary& dictionary, const std::string& key);

// Both throw std::runtime_error when the writer refuses the value.
Bytes binaryPlist(const PlistValue& root);
std::string xmlPlist(const PlistValue& root);

}  // namespace Fixture
