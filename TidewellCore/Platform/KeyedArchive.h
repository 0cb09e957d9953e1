#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/Platform/BinaryPropertyList.h"
#include "TidewellCore/Platform/PropertyList.h"
#include "TidewellCore/Platform/PropertyListView.h"

// What NSKeyedArchiver writes: a property list, binary or XML, of objects that refer to each other by their
// index. Whatever is not as it should be is absent; what is damaged throws PropertyListError.
class KeyedArchive {
 public:
  // The bytes, and what is made from the archive, are good as long as each other.
  explicit KeyedArchive(ByteView record);
  KeyedArchive(const KeyedArchive&) = delete;
  KeyedArchive& operator=(const KeyedArchive&) = delete;

  // What the object that everything begins with, a dictionary, holds under `key`.
  std::optional<PropertyListView> value(std::string_view key) const;
  // The same, or what that leads to.
  std::optional<PropertyListView> object(std::string_view key) const;

  // A whole number, or a real one without its fraction.
  static std::optional<std::int64_t> number(const std::optional<PropertyListView>& value);
  static std::optional<std::string> text(const std::optional<PropertyListView>& value);
  // The bytes of a value, or of the NSData that it is.
  static std::optional<Bytes> bytes(const std::optional<PropertyListView>& value);

 private:
  std::optional<PropertyListView> follow(const std::optional<PropertyListView>& value) const;

  std::optional<BinaryPropertyListFile> file_;
  PropertyList built_;  // of the XML form
  std::optional<PropertyListView> objects_;
  std::optional<PropertyListView> root_;
};
