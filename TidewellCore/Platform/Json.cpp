#include "TidewellCore/Platform/Json.h"

#include <limits>
#include <nlohmann/json.hpp>

namespace {

constexpr int depthLimit = 64;

// An integer where it fits, else the nearest real number.
Json unsignedNumber(std::uint64_t number) {
  if (number > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return static_cast<double>(number);
  return static_cast<std::int64_t>(number);
}

Json fromLibrary(const nlohmann::json& source) {
  switch (source.type()) {
    case nlohmann::json::value_t::boolean:
      return source.get<bool>();
    case nlohmann::json::value_t::number_integer:
      return source.get<std::int64_t>();
    case nlohmann::json::value_t::number_unsigned:
      return unsignedNumber(source.get<std::uint64_t>());
    case nlohmann::json::value_t::number_float:
      return source.get<double>();
    case nlohmann::json::value_t::string:
      return source.get<std::string>();
    case nlohmann::json::value_t::array: {
      Json::Array items;
      for (const auto& item : source) items.push_back(fromLibrary(item));
      return items;
    }
    case nlohmann::json::value_t::object: {
      Json::Object entries;
      for (const auto& [key, value] : source.items()) entries.emplace(key, fromLibrary(value));
      return entries;
    }
    default:
      return {};
  }
}

nlohmann::json toLibrary(const Json& value) {
  if (const auto* items = value.as<Json::Array>()) {
    nlohmann::json result = nlohmann::json::array();
    for (const Json& item : *items) result.push_back(toLibrary(item));
    return result;
  }
  if (const auto* entries = value.as<Json::Object>()) {
    nlohmann::json result = nlohmann::json::object();
    for (const auto& [key, entry] : *entries) result.emplace(key, toLibrary(entry));
    return result;
  }
  if (const auto* text = value.as<std::string>()) return *text;
  if (const auto* number = value.as<std::int64_t>()) return *number;
  if (const auto* real = value.as<double>()) return *real;
  if (const auto* flag = value.as<bool>()) return *flag;
  return nullptr;
}

}  // namespace

std::optional<Json> Json::parse(std::string_view text) {
  bool isTooDeep = false;
  const auto withinDepth = [&](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
    isTooDeep = isTooDeep || depth > depthLimit;
    return !isTooDeep;
  };
  const nlohmann::json document = nlohmann::json::parse(text, withinDepth, /*allow_exceptions=*/false);
  if (isTooDeep || document.is_discarded()) return std::nullopt;
  return fromLibrary(document);
}

std::string Json::write(bool indented) const {
  return toLibrary(*this).dump(indented ? 2 : -1, ' ', /*ensure_ascii=*/false,
                               nlohmann::json::error_handler_t::replace);
}
