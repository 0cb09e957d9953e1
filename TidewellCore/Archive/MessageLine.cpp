#include "TidewellCore/Archive/MessageLine.h"

#include <algorithm>
#include <array>

#include "TidewellCore/Archive/ChatArchiveJSON.h"

namespace {

constexpr char separator = '\t';  // JSON never holds it unescaped
constexpr std::array columnNames{"id", "ts", "text"};

// The two characters that mean something in a template literal stand only
// within JSON texts, where they can be written as escapes.
void escapeForTemplate(std::string& text, std::size_t begin) {
  const auto first = text.find_first_of("`$", begin);
  if (first == std::string::npos) return;
  const std::string rest = text.substr(first);
  text.resize(first);
  for (const char c : rest) {
    if (c == '`') {
      text += "\\u0060";
    } else if (c == '$') {
      text += "\\u0024";
    } else {
      text += c;
    }
  }
}

// Cuts the first column off the line.
std::string_view nextColumn(std::string_view& line) {
  const std::string_view column = line.substr(0, line.find(separator));
  line.remove_prefix(std::min(column.size() + 1, line.size()));
  return column;
}

std::optional<Json::Object> object(std::string_view text) {
  const std::optional<Json> json = Json::parse(text);
  const auto* members = json ? json->as<Json::Object>() : nullptr;
  return members ? std::optional(*members) : std::nullopt;
}

std::optional<Json::Object> messageInColumns(std::string_view line) {
  Json::Object columns;
  for (const char* name : columnNames) {
    const std::string_view column = nextColumn(line);
    if (column.empty()) continue;
    std::optional<Json> value = Json::parse(column);
    if (!value) return std::nullopt;
    columns.emplace(name, std::move(*value));
  }
  std::optional<Json::Object> others = object(line);
  if (!others) return std::nullopt;
  columns.merge(*others);
  return columns;
}

}  // namespace

std::optional<MessageLine::Form> MessageLine::form(const Json::Object& archive) {
  const auto found = archive.find("format");
  if (found == archive.end()) return Form::object;
  const auto* number = found->second.as<std::int64_t>();
  return number != nullptr && *number == static_cast<std::int64_t>(Form::columns) ? std::optional(Form::columns)
                                                                                  : std::nullopt;
}

void MessageLine::append(std::string& text, Json::Object message, Form form) {
  const std::size_t begin = text.size();
  if (form == Form::columns) {
    for (const char* name : columnNames) {
      const auto column = message.extract(name);
      if (!column.empty()) ChatArchiveJSON::append(text, column.mapped());
      text += separator;
    }
  }
  ChatArchiveJSON::append(text, message);
  escapeForTemplate(text, begin);
}

std::optional<Json::Object> MessageLine::message(std::string_view line, Form form) {
  return form == Form::columns ? messageInColumns(line) : object(line);
}
