#include "TidewellCore/Platform/PropertyListView.h"

namespace {

using Object = BinaryPropertyListObject;

std::optional<PropertyListView> viewOf(const PropertyList* value) {
  return value == nullptr ? std::nullopt : std::optional(PropertyListView(*value));
}

}  // namespace

bool PropertyListView::isDictionary() const {
  if (built_ != nullptr) return built_->as<PropertyListDictionary>() != nullptr;
  return file_->object(object_).marker == Object::dictionary;
}

std::optional<PropertyListView> PropertyListView::entry(std::string_view key) const {
  if (built_ != nullptr) {
    const auto* dictionary = built_->as<PropertyListDictionary>();
    return dictionary == nullptr ? std::nullopt : viewOf(::entry(*dictionary, key));
  }
  const auto found = file_->entry(file_->object(object_), key);
  return found ? std::optional(PropertyListView(*file_, *found)) : std::nullopt;
}

std::optional<PropertyListView> PropertyListView::element(std::size_t place) const {
  if (built_ != nullptr) {
    const auto* array = built_->as<PropertyListArray>();
    return array == nullptr || place >= array->size() ? std::nullopt : viewOf(&(*array)[place]);
  }
  const Object object = file_->object(object_);
  const bool isArray = object.marker == Object::array || object.marker == Object::set;
  if (!isArray || place >= object.references) return std::nullopt;
  return PropertyListView(*file_, file_->reference(object, place));
}

PropertyListValue PropertyListView::leaf() const {
  if (built_ != nullptr) {
    const bool isContainer = built_->as<PropertyListDictionary>() || built_->as<PropertyListArray>();
    return isContainer ? PropertyListValue() : built_->value();
  }
  const Object object = file_->object(object_);
  return BinaryPropertyListFile::isContainer(object) ? PropertyListValue() : BinaryPropertyListFile::leaf(object);
}
