#pragma once

#include <string_view>

#include "TidewellCore/Platform/PropertyList.h"

// What NSKeyedArchiver writes: a property list of objects that refer to each other
// by their index. Whatever is not as it should be is null; all pointers are good as long as the archive.
class KeyedArchive {
 public:
  explicit KeyedArchive(PropertyList plist);
  KeyedArchive(const KeyedArchive&) = delete;
  KeyedArchive& operator=(const KeyedArchive&) = delete;

  // The object that everything begins with, when it is a dictionary.
  const PropertyListDictionary* root() const { return root_; }
  // What the root holds under `key`, or what that leads to.
  const PropertyList* object(std::string_view key) const;
  // The bytes of a value, or of the NSData that it is.
  static const Bytes* bytes(const PropertyList* value);

 private:
  const PropertyList* follow(const PropertyList* value) const;

  PropertyList plist_;
  const PropertyListArray* objects_ = nullptr;
  const PropertyListDictionary* root_ = nullptr;
};
