#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/DateText.h"

struct PropertyListValue;

// One value of a property list. Immutable and cheap to copy; an object that a
// binary property list shares between several places stays shared.
class PropertyList {
 public:
  PropertyList();  // null
  explicit PropertyList(PropertyListValue value);

  // The value when it is of type `T` (one of PropertyListValue's alternatives), else null.
  template <typename T>
  const T* as() const;
  const PropertyListValue& value() const { return *value_; }

 private:
  std::shared_ptr<const PropertyListValue> value_;
};

using PropertyListArray = std::vector<PropertyList>;
using PropertyListDictionary = std::map<std::string, PropertyList, std::less<>>;

// A reference into the object table of a keyed archive ("CF$UID").
struct PropertyListUID {
  std::uint64_t index = 0;
};

struct PropertyListValue {
  // Unsigned numbers appear only where a signed one cannot hold the value.
  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, Date, std::string, Bytes, PropertyListArray,
               PropertyListDictionary, PropertyListUID>
      content;
};

template <typename T>
const T* PropertyList::as() const {
  return std::get_if<T>(&value_->content);
}

// A property list that cannot be read; the text says why, for people.
class PropertyListError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What a reader refuses, so that a hostile file costs neither memory nor stack.
struct PropertyListLimits {
  static constexpr std::size_t depth = 256;
  static constexpr std::size_t objects = 4'000'000;
};

// Reads an XML or a binary property list, told apart by its first bytes. Throws PropertyListError.
PropertyList parsePropertyList(ByteView data);

// The entry under `key`, or null when there is none. Valid as long as the dictionary.
const PropertyList* entry(const PropertyListDictionary& dictionary, std::string_view key);
