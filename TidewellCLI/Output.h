#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/Platform/Json.h"

namespace ExitCode {

inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int usage = 2;
inline constexpr int incomplete = 3;  // done, but something is or may be missing
inline constexpr int wrong = 4;       // a verification found something
inline constexpr int interrupted = 130;

}  // namespace ExitCode

// How a command's result is wanted on standard output.
enum class Format { human, json };

// Runs a command's work, which returns an exit code. A failure is reported, as
// one JSON object on standard output or as text on standard error.
int runReporting(Format format, const std::function<int()>& work);

// The folder that an argument names, from the root and without "." and "..".
std::filesystem::path absolutePath(const std::string& argument);

// Keeps a standard stream that the caller closed from becoming the number of a
// file that is opened later, into which messages would then be written.
void reserveStandardStreams();

// None of these throws: a reader that went away must not end the work.
void printLine(std::string_view line);
void printError(std::string_view text);
void printErrorLine(std::string_view line);
// On standard error: sentences for people, the first ten of them and how many more there are.
void printWarnings(const std::vector<std::string>& warnings);
// Of files and pages: the first ten of them and how many more there are.
void printFailures(const std::vector<CopyFailure>& failures);
// One object and a line break.
void printJson(const Json& json);
// False when something that was printed could not be written.
bool flushOutput();
