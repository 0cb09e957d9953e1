#pragma once

#include <functional>
#include <string>
#include <string_view>

// The places of media as a chat database and as a backup call them.
namespace MediaPaths {

// Whether a path of the chat database is that of a file: only what stands in WhatsApp's own folder of media is in a
// backup. Letter case does not matter.
bool isOfFile(std::string_view localPath);
// The same place in the backup, "Message/Media/…".
std::string inBackup(std::string_view localPath);

// Whether the backup has a file, by its place there; an empty one stands for a backup that has every file.
using Lookup = std::function<bool(const std::string&)>;

}  // namespace MediaPaths
