#pragma once

#include <optional>
#include <string_view>

#include "TidewellCore/Platform/BinaryPropertyList.h"
#include "TidewellCore/Platform/PropertyList.h"

// A value in a property list of which only a little is wanted: of the binary form
// nothing is built, and damage elsewhere in it goes unnoticed. Good as long as
// what it was made from. All throw PropertyListError where the value itself is damaged.
class PropertyListView {
 public:
  explicit PropertyListView(const PropertyList& built) : built_(&built) {}
  PropertyListView(const BinaryPropertyListFile& file, std::size_t object) : file_(&file), object_(object) {}

  bool isDictionary() const;
  // What a dictionary holds under a key; absent where there is none, and in anything else.
  std::optional<PropertyListView> entry(std::string_view key) const;
  // The same of an array and a place in it, from 0.
  std::optional<PropertyListView> element(std::size_t place) const;
  // The value of what holds no others; null for a container.
  PropertyListValue leaf() const;

 private:
  const PropertyList* built_ = nullptr;
  const BinaryPropertyListFile* file_ = nullptr;
  std::size_t object_ = 0;
};
