#include "TidewellCore/Platform/KeyedArchive.h"

#include <cmath>
#include <utility>

namespace {

// Doubles below it are 64-bit numbers.
constexpr double beyondIntegers = 9.2e18;

template <typename T>
std::optional<T> leafOf(const std::optional<PropertyListView>& value) {
  if (!value) return std::nullopt;
  PropertyListValue leaf = value->leaf();
  T* content = std::get_if<T>(&leaf.content);
  return content == nullptr ? std::nullopt : std::optional(std::move(*content));
}

// A UID of the binary form, a dictionary with "CF$UID" of the XML form, or a plain number.
std::optional<std::uint64_t> reference(const PropertyListView& value) {
  const PropertyListValue leaf = (value.isDictionary() ? value.entry("CF$UID").value_or(value) : value).leaf();
  if (const auto* uid = std::get_if<PropertyListUID>(&leaf.content)) return uid->index;
  const auto* integer = std::get_if<std::int64_t>(&leaf.content);
  const auto* real = std::get_if<double>(&leaf.content);
  if (integer != nullptr && *integer >= 0) return static_cast<std::uint64_t>(*integer);
  if (real != nullptr && *real >= 0 && *real < beyondIntegers) return static_cast<std::uint64_t>(*real);
  return std::nullopt;
}

}  // namespace

KeyedArchive::KeyedArchive(ByteView record) {
  std::optional<PropertyListView> archive;
  if (textOf(record).starts_with("bplist")) {
    file_.emplace(record);
    archive.emplace(*file_, file_->root());
  } else {
    built_ = parsePropertyList(record);
    archive.emplace(built_);
  }
  objects_ = archive->entry("$objects");
  if (const auto top = archive->entry("$top")) root_ = follow(top->entry("root"));
  if (root_ && !root_->isDictionary()) root_.reset();
}

std::optional<PropertyListView> KeyedArchive::value(std::string_view key) const {
  return root_ ? root_->entry(key) : std::nullopt;
}

std::optional<PropertyListView> KeyedArchive::object(std::string_view key) const { return follow(value(key)); }

std::optional<std::int64_t> KeyedArchive::number(const std::optional<PropertyListView>& value) {
  if (const auto integer = leafOf<std::int64_t>(value)) return integer;
  const auto real = leafOf<double>(value);
  return real && std::abs(*real) < beyondIntegers ? std::optional(static_cast<std::int64_t>(*real)) : std::nullopt;
}

std::optional<std::string> KeyedArchive::text(const std::optional<PropertyListView>& value) {
  return leafOf<std::string>(value);
}

std::optional<Bytes> KeyedArchive::bytes(const std::optional<PropertyListView>& value) {
  if (!value || !value->isDictionary()) return leafOf<Bytes>(value);
  for (const char* key : {"NS.data", "NS.bytes"}) {
    if (auto content = leafOf<Bytes>(value->entry(key))) return content;
  }
  return std::nullopt;
}

// The object that a reference leads to, of which the first stands for none; a value that is no reference stands for
// itself.
std::optional<PropertyListView> KeyedArchive::follow(const std::optional<PropertyListView>& value) const {
  const auto place = value ? reference(*value) : std::nullopt;
  if (!place) return value;
  return objects_ && *place > 0 ? objects_->element(static_cast<std::size_t>(*place)) : std::nullopt;
}
