#include "TidewellCore/Library/MessageFacts.h"

#include <cmath>
#include <tuple>
#include <type_traits>
#include <utility>

#include "TidewellCore/Library/MessageFactNames.h"
#include "TidewellCore/Platform/JSONMembers.h"

namespace {

using MessageFactNames::As;
using MessageFactNames::kindOf;
using MessageFactNames::members;
using MessageFactNames::Named;

template <typename Type>
concept Record = requires(Type& record) {
  members(record);
};

template <typename Type>
concept Enumeration = std::is_enum_v<Type>;

// One overload for each type of a member. Null is not written.
struct Writer {
  static Json json(bool flag) { return flag; }
  static Json json(std::int64_t number) { return number; }
  static Json json(const std::string& text) { return text; }
  static Json json(Enumeration auto value) { return rawValue(value); }
  static Json json(const Record auto& record) { return object(record); }

  static Json json(const Coordinates& coordinates) {
    const auto& [latitude, longitude] = coordinates;
    if (!std::isfinite(latitude) || !std::isfinite(longitude)) return {};
    return Json::Array{latitude, longitude};
  }

  template <typename Value>
  static Json json(const std::optional<Value>& value) {
    return value ? json(*value) : Json();
  }

  template <typename Value>
  static Json json(const std::vector<Value>& values) {
    Json::Array list;
    list.reserve(values.size());
    for (const Value& value : values) list.push_back(json(value));
    return list;
  }

  // No content has a member called "kind".
  static Json json(const MessageContent& content) {
    return std::visit(
        []<typename Content>(const Content& facts) {
          Json::Object json = object(facts);
          json.emplace("kind", kindOf(As<Content>()));
          return json;
        },
        content);
  }

  // Without the members that are as in a record which nobody has filled.
  template <typename Type>
  static Json::Object object(const Type& record) {
    static const Type unfilled{};
    Json::Object json;
    const auto own = members(record);
    add(own, members(unfilled), std::make_index_sequence<std::tuple_size_v<decltype(own)>>(), json);
    return json;
  }

 private:
  template <typename Members, std::size_t... index>
  static void add(const Members& own, const Members& unfilled, std::index_sequence<index...>, Json::Object& object) {
    (addMember(std::get<index>(own), std::get<index>(unfilled), object), ...);
  }

  template <typename Value>
  static void addMember(const Named<Value>& own, const Named<Value>& unfilled, Json::Object& object) {
    if (own.value == unfilled.value) return;
    Json value = json(own.value);
    if (value != Json()) object.emplace(own.name, std::move(value));
  }
};

// One overload for each type of a member. False, and the value stays, where the JSON is of another type.
struct Reader {
  static bool read(const Json& json, bool& flag) { return take(json, flag); }
  static bool read(const Json& json, std::int64_t& number) { return take(json, number); }
  static bool read(const Json& json, std::string& text) { return take(json, text); }

  // JSON knows but one type of number: a whole one may stand without its ".0".
  static bool read(const Json& json, double& number) {
    const auto* whole = json.as<std::int64_t>();
    if (whole != nullptr) number = static_cast<double>(*whole);
    return whole != nullptr || take(json, number);
  }

  static bool read(const Json& json, Enumeration auto& value) {
    const auto* raw = json.as<std::string>();
    const auto known = raw ? fromRawValue<std::remove_reference_t<decltype(value)>>(*raw) : std::nullopt;
    if (known) value = *known;
    return known.has_value();
  }

  static bool read(const Json& json, Record auto& record) {
    const auto* object = json.as<Json::Object>();
    if (object != nullptr) fill(*object, record);
    return object != nullptr;
  }

  static bool read(const Json& json, Coordinates& coordinates) {
    auto& [latitude, longitude] = coordinates;
    const auto* pair = json.as<Json::Array>();
    return pair != nullptr && pair->size() == 2 && read((*pair)[0], latitude) && read((*pair)[1], longitude);
  }

  template <typename Value>
  static bool read(const Json& json, std::optional<Value>& value) {
    Value known;
    if (!read(json, known)) return false;
    value = std::move(known);
    return true;
  }

  template <typename Value>
  static bool read(const Json& json, std::vector<Value>& values) {
    const auto* list = json.as<Json::Array>();
    if (list == nullptr) return false;
    values.reserve(list->size());
    for (const Json& entry : *list) {
      Value value;
      if (read(entry, value)) values.push_back(std::move(value));
    }
    return true;
  }

  // A kind that is not known is that of a later version.
  static bool read(const Json& json, MessageContent& content) {
    const auto* object = json.as<Json::Object>();
    const auto* kind = object ? JSONMembers::member<std::string>(*object, "kind") : nullptr;
    return kind != nullptr && fillFirst(*kind, *object, content, As<MessageContent>());
  }

 private:
  template <typename Value>
  static bool take(const Json& json, Value& value) {
    const auto* known = json.as<Value>();
    if (known != nullptr) value = *known;
    return known != nullptr;
  }

  static void fill(const Json::Object& object, auto& record) {
    std::apply([&object](const auto&... member) { (fillMember(object, member), ...); }, members(record));
  }

  template <typename Value>
  static void fillMember(const Json::Object& object, const Named<Value>& member) {
    const auto found = object.find(member.name);
    if (found != object.end()) read(found->second, member.value);
  }

  template <typename... Contents>
  static bool fillFirst(std::string_view kind, const Json::Object& object, MessageContent& content,
                        As<std::variant<Contents...>>) {
    return (fillAs<Contents>(kind, object, content) || ...);
  }

  template <typename Content>
  static bool fillAs(std::string_view kind, const Json::Object& object, MessageContent& content) {
    if (kind != kindOf(As<Content>())) return false;
    fill(object, content.emplace<Content>());
    return true;
  }
};

}  // namespace

std::string MessageFacts::write(const MessageDetails& details) {
  return details == MessageDetails() ? "" : Json(Writer::object(details)).write();
}

MessageDetails MessageFacts::read(std::string_view text) {
  MessageDetails details;
  const auto json = text.empty() ? std::nullopt : Json::parse(text);
  if (json) Reader::read(*json, details);
  return details;
}
