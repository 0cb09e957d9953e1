#include "TidewellCore/Platform/KeyedArchive.h"

#include <cmath>

namespace {

const PropertyListDictionary* dictionary(const PropertyList* value) {
  return value == nullptr ? nullptr : value->as<PropertyListDictionary>();
}

std::optional<std::uint64_t> index(const PropertyList* value) {
  if (value == nullptr) return std::nullopt;
  const auto* integer = value->as<std::int64_t>();
  const auto* real = value->as<double>();
  if (integer != nullptr && *integer >= 0) return static_cast<std::uint64_t>(*integer);
  if (real != nullptr && *real >= 0 && *real < 9.2e18) return static_cast<std::uint64_t>(*real);
  return std::nullopt;
}

// A UID of the binary form, a dictionary with "CF$UID" of the XML form, or a plain number.
std::optional<std::uint64_t> reference(const PropertyList* value) {
  if (value == nullptr) return std::nullopt;
  if (const auto* uid = value->as<PropertyListUID>()) return uid->index;
  const auto* wrapper = dictionary(value);
  return index(wrapper == nullptr ? value : entry(*wrapper, "CF$UID"));
}

}  // namespace

KeyedArchive::KeyedArchive(PropertyList plist) : plist_(std::move(plist)) {
  const auto* archive = plist_.as<PropertyListDictionary>();
  if (archive == nullptr) return;
  const PropertyList* objects = entry(*archive, "$objects");
  if (objects != nullptr) objects_ = objects->as<PropertyListArray>();
  const auto* top = dictionary(entry(*archive, "$top"));
  if (top != nullptr) root_ = dictionary(follow(entry(*top, "root")));
}

const PropertyList* KeyedArchive::object(std::string_view key) const {
  return root_ == nullptr ? nullptr : follow(entry(*root_, key));
}

const Bytes* KeyedArchive::bytes(const PropertyList* value) {
  if (value == nullptr) return nullptr;
  if (const auto* bytes = value->as<Bytes>()) return bytes;
  const auto* object = dictionary(value);
  if (object == nullptr) return nullptr;
  for (const char* key : {"NS.data", "NS.bytes"}) {
    const PropertyList* content = entry(*object, key);
    if (content != nullptr && content->as<Bytes>() != nullptr) return content->as<Bytes>();
  }
  return nullptr;
}

// The object that a reference leads to, of which the first stands for none; a value that is no reference stands for
// itself.
const PropertyList* KeyedArchive::follow(const PropertyList* value) const {
  const auto place = reference(value);
  if (!place) return value;
  if (objects_ == nullptr || *place == 0 || *place >= objects_->size()) return nullptr;
  return &(*objects_)[static_cast<std::size_t>(*place)];
}
