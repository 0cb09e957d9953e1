#include "TidewellCore/Platform/Json.h"

#include <limits>
#include <nlohmann/json.hpp>

namespace {

constexpr std::size_t depthLimit = 64;

// An integer where it fits, else the nearest real number.
Json unsignedNumber(std::uint64_t number) {
  if (number > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return static_cast<double>(number);
  return static_cast<std::int64_t>(number);
}

// Builds a document from the library's events. The library's own way to watch
// the depth takes time that grows with the square of a list's length.
class Builder : public nlohmann::json_sax<nlohmann::json> {
 public:
  Json take() { return std::move(root_); }

  bool null() override { return add({}); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(std::int64_t value) override { return add(value); }
  bool number_unsigned(std::uint64_t value) override { return add(unsignedNumber(value)); }
  bool number_float(double value, const std::string&) override { return add(value); }
  bool string(std::string& value) override { return add(std::move(value)); }
  bool binary(nlohmann::json::binary_t&) override { return false; }

  bool start_object(std::size_t) override { return open(Json::Object()); }
  bool key(std::string& name) override {
    open_.back().key = std::move(name);
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(Json::Array()); }
  bool end_array() override { return close(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override { return false; }

 private:
  // An array or an object that has begun, and the key of the entry to come.
  struct Container {
    std::variant<Json::Array, Json::Object> value;
    std::string key;
  };

  bool add(Json value) {
    if (open_.size() > depthLimit) return false;
    if (open_.empty()) {
      root_ = std::move(value);
    } else if (auto* items = std::get_if<Json::Array>(&open_.back().value)) {
      items->push_back(std::move(value));
    } else {
      std::get<Json::Object>(open_.back().value).insert_or_assign(std::move(open_.back().key), std::move(value));
    }
    return true;
  }

  template <typename Value>
  bool open(Value value) {
    if (open_.size() > depthLimit) return false;
    open_.push_back({.value = std::move(value), .key = {}});
    return true;
  }

  bool close() {
    Container closed = std::move(open_.back());
    open_.pop_back();
    return std::visit([this](auto& value) { return add(std::move(value)); }, closed.value);
  }

  Json root_;
  std::vector<Container> open_;
};

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
  Builder builder;
  if (!nlohmann::json::sax_parse(text, &builder)) return std::nullopt;
  return builder.take();
}

std::string Json::write(bool indented) const {
  return toLibrary(*this).dump(indented ? 2 : -1, ' ', /*ensure_ascii=*/false,
                               nlohmann::json::error_handler_t::replace);
}
