#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// A JSON document in memory, for small documents. Object keys are kept, and
// written, in byte order.
class Json {
 public:
  using Array = std::vector<Json>;
  using Object = std::map<std::string, Json, std::less<>>;
  using Value = std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, Array, Object>;

  Json() = default;  // null
  Json(bool value) : value_(value) {}
  Json(std::int64_t value) : value_(value) {}
  Json(double value) : value_(value) {}
  Json(std::string value) : value_(std::move(value)) {}
  Json(std::string_view value) : value_(std::string(value)) {}
  Json(const char* value) : value_(std::string(value)) {}
  Json(Array value) : value_(std::move(value)) {}
  Json(Object value) : value_(std::move(value)) {}

  // Absent when the text is no JSON, or nested deeper than 64 levels.
  static std::optional<Json> parse(std::string_view text);

  // Compact, or with `indented` a line for every entry.
  std::string write(bool indented = false) const;

  // The value when it is of type `T` (one of Value's alternatives), else null.
  template <typename T>
  const T* as() const {
    return std::get_if<T>(&value_);
  }
  template <typename T>
  T* as() {
    return std::get_if<T>(&value_);
  }

  bool operator==(const Json&) const = default;

 private:
  Value value_;
};
