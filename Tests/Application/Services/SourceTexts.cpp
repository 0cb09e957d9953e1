#include "Tests/Application/Services/SourceTexts.h"

#include <array>
#include <optional>
#include <regex>
#include <utility>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/Bytes.h"

namespace {

// Walks through a source from literal to literal.
class Scanner {
 public:
  explicit Scanner(std::string_view source) : rest_(source) {}

  // The next literal, those that follow it with nothing between joined to it.
  std::optional<std::string> next() {
    if (!skipToQuote()) return std::nullopt;
    std::string text = literal();
    while (skipBlanks(), isQuote(rest_)) text += literal();
    return text;
  }
  // The code before it, without comments.
  const std::string& before() const { return before_; }

 private:
  static bool isQuote(std::string_view text) { return text.starts_with('"'); }

  bool skipToQuote() {
    before_.clear();
    while (!rest_.empty() && !isQuote(rest_)) {
      if (skipComment()) continue;
      // A quotation mark as a character.
      const std::size_t length = rest_.starts_with("'\"'") ? 3 : rest_.starts_with("'\\\"'") ? 4 : 1;
      before_ += rest_.substr(0, length);
      rest_.remove_prefix(length);
    }
    return !rest_.empty();
  }

  bool skipComment() {
    if (!rest_.starts_with("//") && !rest_.starts_with("/*")) return false;
    const std::string_view end = rest_.starts_with("//") ? "\n" : "*/";
    const std::size_t place = rest_.find(end, 2);
    rest_.remove_prefix(place == std::string_view::npos ? rest_.size() : place + end.size());
    return true;
  }

  void skipBlanks() {
    while (!rest_.empty() && (std::string_view(" \t\r\n").find(rest_[0]) != std::string_view::npos)) {
      rest_.remove_prefix(1);
    }
  }

  std::string literal() {
    std::string text;
    for (rest_.remove_prefix(1); !rest_.empty() && !isQuote(rest_); rest_.remove_prefix(1)) {
      text += rest_[0] == '\\' && rest_.size() > 1 ? escaped() : rest_[0];
    }
    if (!rest_.empty()) rest_.remove_prefix(1);
    return text;
  }

  char escaped() {
    rest_.remove_prefix(1);
    return rest_[0] == 'n' ? '\n' : rest_[0] == 't' ? '\t' : rest_[0];
  }

  std::string_view rest_;
  std::string before_;
};

// Of a name without a namespace before it: fmt::format is something else.
bool looksUp(const std::string& before) {
  static const std::regex lookup(R"((^|[^:\w])(text|format)\(\s*((QStringLiteral|QLatin1String)\(\s*)?u?$)");
  return std::regex_search(before, lookup);
}

bool isSource(const std::filesystem::path& file) {
  const std::filesystem::path extension = file.extension();
  return extension == ".cpp" || extension == ".h" || extension == ".qml";
}

}  // namespace

void SourceTexts::read(std::string_view source) {
  Scanner scanner(source);
  while (const std::optional<std::string> text = scanner.next()) {
    all.insert(*text);
    if (looksUp(scanner.before())) lookedUp.insert(*text);
  }
}

void SourceTexts::readFolder(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && isSource(entry.path())) read(textOf(Fixture::readFile(entry.path())));
  }
}
