#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/Json.h"

// The members of an object that somebody else may have written.
namespace JSONMembers {

// Null unless the object has a member of that name and type.
template <typename Value>
const Value* member(const Json::Object& json, std::string_view name) {
  const auto found = json.find(name);
  return found == json.end() ? nullptr : found->second.as<Value>();
}

// The default value in its place.
template <typename Value>
Value valueOf(const Json::Object& json, std::string_view name) {
  const auto* value = member<Value>(json, name);
  return value ? *value : Value();
}

inline std::optional<std::string> textOf(const Json::Object& json, std::string_view name) {
  const auto* text = member<std::string>(json, name);
  return text ? std::optional(*text) : std::nullopt;
}

// The texts of a list of that name, without its other entries.
inline std::vector<std::string> textsOf(const Json::Object& json, std::string_view name) {
  std::vector<std::string> texts;
  for (const Json& entry : valueOf<Json::Array>(json, name)) {
    if (const auto* text = entry.as<std::string>()) texts.push_back(*text);
  }
  return texts;
}

}  // namespace JSONMembers
