#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "TidewellCore/Platform/Json.h"

// Small files of one JSON object each, in which something is remembered.
namespace JsonFile {

// Absent when no regular file stands there, or one longer than `limit` bytes or
// that holds anything but an object. Throws what reading reports.
std::optional<Json::Object> readIfThere(const std::filesystem::path& file, std::int64_t limit);

// What such a file holds: a line for every entry.
std::string content(Json::Object object);

}  // namespace JsonFile
