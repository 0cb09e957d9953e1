#include "TidewellCore/Platform/PropertyList.h"

#include "TidewellCore/Platform/BinaryPropertyList.h"
#include "TidewellCore/Platform/XMLPropertyList.h"

PropertyList::PropertyList() {
  static const auto null = std::make_shared<const PropertyListValue>();
  value_ = null;
}

PropertyList::PropertyList(PropertyListValue value)
    : value_(std::make_shared<const PropertyListValue>(std::move(value))) {}

PropertyList parsePropertyList(ByteView data) {
  return textOf(data).starts_with("bplist") ? parseBinaryPropertyList(data) : parseXMLPropertyList(data);
}

const PropertyList* entry(const PropertyListDictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  return found == dictionary.end() ? nullptr : &found->second;
}
