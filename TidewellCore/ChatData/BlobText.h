#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What is taken from fields of strangers' blobs and columns.
namespace BlobText {

// The text without blanks at its ends; absent when nothing is left.
std::optional<std::string> words(std::optional<std::string_view> text);
// The same, cut to what a line of a reply or a preview can show.
std::optional<std::string> shortWords(std::optional<std::string_view> text);
inline constexpr std::size_t longestShortWords = 1'000;  // bytes

// Text that somebody may have written: not blank, no JID, no JSON, be it damaged, and nothing that only machines read.
bool isReadable(std::optional<std::string_view> text);

// A length of time that a person can have meant; absent for a negative one and one of more than ten years.
std::optional<std::int64_t> seconds(std::optional<std::int64_t> number);
// The same from a text of digits alone.
std::optional<std::int64_t> secondsInText(std::string_view text);

}  // namespace BlobText
