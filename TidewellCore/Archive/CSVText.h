#pragma once

#include <string>
#include <string_view>
#include <vector>

// Text as comma-separated values (RFC 4180) that spreadsheet programs open.
namespace CSVText {

// Without it some of these programs take UTF-8 for an older encoding.
inline constexpr std::string_view byteOrderMark = "\uFEFF";

// Words as a cell that no program takes for a formula: an apostrophe stands before what begins one (OWASP, "CSV
// Injection"), and before an apostrophe, so that whoever takes one off a cell's beginning has the words again.
std::string words(std::string_view text);

// A row and its line break at the end of `table`. Cells are quoted where they must be.
void appendRow(std::string& table, const std::vector<std::string>& cells);

}  // namespace CSVText
