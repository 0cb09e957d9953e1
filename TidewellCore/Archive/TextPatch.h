#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

// A text of which some parts, that do not overlap, are replaced.
class TextPatch {
 public:
  // `text` must outlive it.
  explicit TextPatch(std::string_view text) : text_(text) {}

  // `part` is a view into the text.
  void replace(std::string_view part, std::string replacement) {
    const auto offset = static_cast<std::size_t>(part.data() - text_.data());
    replacements_.insert_or_assign(offset, Replacement{.length = part.size(), .text = std::move(replacement)});
  }

  // The whole text with its new parts; absent when nothing was replaced.
  std::optional<std::string> result() const {
    if (replacements_.empty()) return std::nullopt;
    std::string result;
    std::size_t done = 0;
    for (const auto& [offset, replacement] : replacements_) {
      result.append(text_.substr(done, offset - done)).append(replacement.text);
      done = offset + replacement.length;
    }
    return result.append(text_.substr(done));
  }

 private:
  struct Replacement {
    std::size_t length = 0;
    std::string text;
  };

  std::string_view text_;
  std::map<std::size_t, Replacement> replacements_;  // by their offset
};
