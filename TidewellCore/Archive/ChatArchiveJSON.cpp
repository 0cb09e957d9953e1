#include "TidewellCore/Archive/ChatArchiveJSON.h"

#include <fmt/format.h>

#include <cmath>

#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/TidewellError.h"

namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view lineSeparator = "\u2028";
constexpr std::string_view paragraphSeparator = "\u2029";

void appendControl(std::string& out, char c) {
  switch (c) {
    case '\n':
      out += "\\n";
      break;
    case '\r':
      out += "\\r";
      break;
    case '\t':
      out += "\\t";
      break;
    default:
      out += fmt::format("\\u{:04x}", static_cast<unsigned>(static_cast<unsigned char>(c)));
  }
}

void appendText(std::string& out, std::string_view text) {
  if (!Text::isValid(text)) throw TidewellError::ioFailure("Could not encode Chat Archive data as UTF-8.");
  out += '"';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (c == '<') {
      out += "\\u003c";
    } else if (static_cast<unsigned char>(c) < 0x20) {
      appendControl(out, c);
    } else if (c == lineSeparator.front() && text.substr(i).starts_with(lineSeparator)) {
      out += "\\u2028";
      i += lineSeparator.size() - 1;
    } else if (c == paragraphSeparator.front() && text.substr(i).starts_with(paragraphSeparator)) {
      out += "\\u2029";
      i += paragraphSeparator.size() - 1;
    } else {
      out += c;
    }
  }
  out += '"';
}

// With a point or an exponent, so that it is read as a real number again.
void appendReal(std::string& out, double number) {
  const std::string digits = fmt::format("{}", number);
  out += digits;
  if (digits.find_first_of(".e") == std::string::npos) out += ".0";
}

void appendArray(std::string& out, const Json::Array& items) {
  out += '[';
  for (const Json& item : items) {
    if (&item != &items.front()) out += ',';
    ChatArchiveJSON::append(out, item);
  }
  out += ']';
}

std::string_view withoutLeadingBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(blanks);
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

// The offset behind the string literal that begins at `offset`; npos when it does not end.
std::size_t endOfLiteral(std::string_view text, std::size_t offset) {
  for (++offset; offset < text.size(); ++offset) {
    if (text[offset] == '\\') {
      ++offset;
    } else if (text[offset] == '"') {
      return offset + 1;
    }
  }
  return std::string_view::npos;
}

// The offset behind the array or object that begins at 0; npos when it does not end.
std::size_t endOfNested(std::string_view text) {
  std::size_t depth = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    const char c = text[offset];
    if (c == '"') {
      offset = endOfLiteral(text, offset);
      continue;
    }
    if (c == '{' || c == '[') ++depth;
    if ((c == '}' || c == ']') && --depth == 0) return offset + 1;
    ++offset;
  }
  return std::string_view::npos;
}

struct Assignment {
  std::string_view identifier;
  std::string_view value;
  std::string_view remainder;
};

// The first statement of a text when it is "window.NAME = VALUE;".
std::optional<Assignment> firstAssignment(std::string_view text) {
  constexpr std::string_view prefix = "window.";
  text = withoutLeadingBlanks(text);
  const auto equals = text.find('=');
  if (!text.starts_with(prefix) || equals == std::string_view::npos) return std::nullopt;
  std::string_view identifier = text.substr(prefix.size(), equals - prefix.size());
  identifier = identifier.substr(0, identifier.find_last_not_of(blanks) + 1);
  const std::string_view rest = withoutLeadingBlanks(text.substr(equals + 1));
  const std::string_view value = ChatArchiveJSON::extractJSONValue(rest);
  if (value.empty()) return std::nullopt;
  std::string_view remainder = withoutLeadingBlanks(rest.substr(value.size()));
  if (remainder.starts_with(';')) remainder.remove_prefix(1);
  if (remainder.starts_with('\n')) remainder.remove_prefix(1);
  return Assignment{.identifier = identifier, .value = value, .remainder = remainder};
}

// A member's name is looked for statement by statement: it may stand in a text as well.
std::optional<Assignment> findAssignment(std::string_view text, std::string_view identifier) {
  auto found = firstAssignment(text);
  while (found && found->identifier != identifier) found = firstAssignment(found->remainder);
  return found;
}

}  // namespace

std::string ChatArchiveJSON::stringify(const Json& value) {
  std::string text;
  append(text, value);
  return text;
}

void ChatArchiveJSON::append(std::string& text, const Json& value) {
  if (const auto* string = value.as<std::string>()) {
    appendText(text, *string);
  } else if (const auto* integer = value.as<std::int64_t>()) {
    text += std::to_string(*integer);
  } else if (const auto* flag = value.as<bool>()) {
    text += *flag ? "true" : "false";
  } else if (const auto* entries = value.as<Json::Object>()) {
    append(text, *entries);
  } else if (const auto* items = value.as<Json::Array>()) {
    appendArray(text, *items);
  } else if (const auto* real = value.as<double>(); real != nullptr && std::isfinite(*real)) {
    appendReal(text, *real);
  } else {
    text += "null";
  }
}

void ChatArchiveJSON::append(std::string& text, const Json::Object& object) {
  char separator = '{';
  for (const auto& [key, value] : object) {
    text += separator;
    appendText(text, key);
    text += ':';
    append(text, value);
    separator = ',';
  }
  text += object.empty() ? "{}" : "}";
}

std::string ChatArchiveJSON::assignment(std::string_view identifier, const Json& value) {
  return fmt::format("window.{} = {};\n", identifier, stringify(value));
}

std::optional<Json> ChatArchiveJSON::parseAssignment(std::string_view text, std::string_view identifier) {
  const auto found = findAssignment(text, identifier);
  return found ? Json::parse(found->value) : std::nullopt;
}

std::string_view ChatArchiveJSON::assignedValue(std::string_view text, std::string_view identifier) {
  const auto found = findAssignment(text, identifier);
  return found ? found->value : std::string_view();
}

std::string_view ChatArchiveJSON::extractJSONValue(std::string_view text) {
  text = withoutLeadingBlanks(text);
  if (text.empty()) return {};
  std::size_t end = 0;
  if (text.front() == '{' || text.front() == '[') {
    end = endOfNested(text);
  } else if (text.front() == '"') {
    end = endOfLiteral(text, 0);
  } else {
    end = std::min(text.find_first_of(",;]} \t\r\n"), text.size());
  }
  return end == std::string_view::npos ? std::string_view() : text.substr(0, end);
}

std::string_view ChatArchiveJSON::remainderAfterAssignment(std::string_view text, std::string_view identifier) {
  const auto found = findAssignment(text, identifier);
  return found ? found->remainder : std::string_view();
}
