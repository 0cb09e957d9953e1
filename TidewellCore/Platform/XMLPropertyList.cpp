#include "TidewellCore/Platform/XMLPropertyList.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/Text.h"

namespace {

[[noreturn]] void failOnNumber() { throw PropertyListError("The property list holds a number that cannot be read."); }

// Unsigned numbers and signed ones, in decimal or, after "0x", in base 16.
PropertyListValue integerValue(std::string_view text) {
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  const bool hasPrefix = isHex || text.starts_with('+');
  if (hasPrefix) text.remove_prefix(isHex ? 2 : 1);
  if (hasPrefix && text.starts_with('-')) failOnNumber();
  const char* end = text.data() + text.size();
  std::int64_t number = 0;
  auto result = std::from_chars(text.data(), end, number, isHex ? 16 : 10);
  if (result.ec == std::errc() && result.ptr == end) return {number};
  std::uint64_t large = 0;
  result = std::from_chars(text.data(), end, large, isHex ? 16 : 10);
  if (result.ec == std::errc() && result.ptr == end) return {large};
  failOnNumber();
}

PropertyListValue realValue(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc() && end == text.data() + text.size()) return {number};
  failOnNumber();
}

PropertyListValue dateValue(std::string_view text) {
  if (const std::optional<Date> date = dateFromISO8601(text)) return {*date};
  throw PropertyListError("The property list holds a date that cannot be read.");
}

PropertyListValue dataValue(std::string_view text) {
  if (std::optional<Bytes> bytes = Base64::decode(text)) return {std::move(*bytes)};
  throw PropertyListError("The property list holds data that cannot be read.");
}

PropertyListValue scalarValue(std::string_view element, const std::string& text) {
  if (element == "string") return {text};
  if (element == "integer") return integerValue(Text::trimmed(text));
  if (element == "real") return realValue(Text::trimmed(text));
  if (element == "date") return dateValue(Text::trimmed(text));
  if (element == "data") return dataValue(text);
  if (element == "true") return {true};
  if (element == "false") return {false};
  throw PropertyListError(fmt::format("The property list holds an unknown element <{}>.", Text::repaired(element)));
}

// An element that has begun and not ended yet.
struct Open {
  std::string element;
  std::string text;
  PropertyListArray items;
  PropertyListDictionary entries;
  std::optional<std::string> key;
};

class Builder {
 public:
  void begin(std::string_view element) {
    if (open_.size() >= PropertyListLimits::depth) throw PropertyListError("The property list is nested too deeply.");
    if (open_.empty() != (element == "plist")) throw PropertyListError("The file is not a property list.");
    open_.push_back({.element = std::string(element)});
  }

  void text(std::string_view characters) {
    if (!open_.empty()) open_.back().text += characters;
  }

  void end() {
    Open done = std::move(open_.back());
    open_.pop_back();
    if (done.element == "plist") return;
    if (done.element == "key") return setKey(std::move(done.text));
    add(PropertyList(value(done)));
  }

  PropertyList root() const {
    if (!root_) throw PropertyListError("The property list is empty.");
    return *root_;
  }

 private:
  static PropertyListValue value(Open& done) {
    if (done.element == "array") return {std::move(done.items)};
    if (done.element != "dict") return scalarValue(done.element, done.text);
    if (done.key) throw PropertyListError("The property list holds a key without a value.");
    return {std::move(done.entries)};
  }

  void setKey(std::string key) {
    Open& parent = open_.back();
    if (parent.element != "dict" || parent.key) throw PropertyListError("The property list holds a misplaced key.");
    parent.key = std::move(key);
  }

  void add(PropertyList item) {
    if (++count_ > PropertyListLimits::objects) throw PropertyListError("The property list holds too many values.");
    Open& parent = open_.back();
    if (parent.element == "array") {
      parent.items.push_back(std::move(item));
    } else if (parent.element == "dict" && parent.key) {
      parent.entries.insert_or_assign(std::move(*parent.key), std::move(item));
      parent.key.reset();
    } else if (parent.element == "plist" && !root_) {
      root_ = std::move(item);
    } else {
      throw PropertyListError("The property list holds a misplaced value.");
    }
  }

  std::vector<Open> open_;
  std::optional<PropertyList> root_;
  std::size_t count_ = 0;
};

// Joins expat, which knows nothing of exceptions, to the builder: the first
// failure stops the parser and is thrown once it has returned.
struct Session {
  XML_Parser parser = nullptr;
  Builder builder;
  std::exception_ptr failure;

  template <typename Action>
  void run(Action action) {
    if (failure) return;
    try {
      action();
    } catch (...) {
      failure = std::current_exception();
      XML_StopParser(parser, XML_FALSE);
    }
  }
};

Session& session(void* userData) { return *static_cast<Session*>(userData); }

void XMLCALL beginElement(void* userData, const XML_Char* name, const XML_Char**) {
  session(userData).run([&] { session(userData).builder.begin(name); });
}

void XMLCALL endElement(void* userData, const XML_Char*) {
  session(userData).run([&] { session(userData).builder.end(); });
}

void XMLCALL characters(void* userData, const XML_Char* text, int length) {
  session(userData).run([&] { session(userData).builder.text({text, static_cast<std::size_t>(length)}); });
}

void XMLCALL entityDeclaration(void* userData, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                               const XML_Char*, const XML_Char*, const XML_Char*) {
  session(userData).run([] { throw PropertyListError("The property list declares entities."); });
}

// Where the document type stands elsewhere, expat takes an unknown entity for one
// that is declared there, and would leave it out of the text.
void XMLCALL skippedEntity(void* userData, const XML_Char*, int) {
  session(userData).run([] { throw PropertyListError("The property list refers to an unknown entity."); });
}

void parseInSlices(Session& session, ByteView data) {
  constexpr std::size_t slice = 1 << 20;
  XML_Status status = XML_STATUS_OK;
  for (bool isLast = false; !isLast && status == XML_STATUS_OK;) {
    const ByteView part = data.first(std::min(slice, data.size()));
    data = data.subspan(part.size());
    isLast = data.empty();
    status = XML_Parse(session.parser, textOf(part).data(), static_cast<int>(part.size()), isLast);
  }
  if (session.failure) std::rethrow_exception(session.failure);
  if (status == XML_STATUS_OK) return;
  throw PropertyListError(fmt::format("The property list cannot be read: {} (line {}).",
                                      XML_ErrorString(XML_GetErrorCode(session.parser)),
                                      XML_GetCurrentLineNumber(session.parser)));
}

}  // namespace

PropertyList parseXMLPropertyList(ByteView data) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr), &XML_ParserFree);
  if (!parser) throw std::bad_alloc();
  Session session{.parser = parser.get()};
  XML_SetUserData(parser.get(), &session);
  XML_SetElementHandler(parser.get(), beginElement, endElement);
  XML_SetCharacterDataHandler(parser.get(), characters);
  XML_SetEntityDeclHandler(parser.get(), entityDeclaration);
  XML_SetSkippedEntityHandler(parser.get(), skippedEntity);
  parseInSlices(session, data);
  return session.builder.root();
}
