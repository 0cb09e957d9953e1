#pragma once

#include <string>
#include <vector>

#include "TidewellCore/Backup/ManifestStore.h"

// A backup may hold WhatsApp and WhatsApp Business. The messages of one are
// read (ManifestStore says of which); the media of both are.
namespace UnreadApps {

inline constexpr const char* businessNotRead =
    "Only the messages of WhatsApp are exported. Those of WhatsApp Business, which is in this backup as well, are "
    "missing; its photos, videos and other files are exported. Keep this backup for them.";
inline constexpr const char* personalNotRead =
    "Only the messages of WhatsApp Business are exported. Those of WhatsApp, which is in this backup as well, are "
    "missing; its photos, videos and other files are exported. Keep this backup for them.";
inline constexpr const char* personalWithoutMessages =
    "The messages of WhatsApp are missing: this backup holds its photos, videos and other files, but not its chat "
    "database. Copy the backup again from where it came, or make a new one with the iPhone.";
inline constexpr const char* businessWithoutMessages =
    "The messages of WhatsApp Business are missing: this backup holds its photos, videos and other files, but not its "
    "chat database. Copy the backup again from where it came, or make a new one with the iPhone.";

// Which of these sentences are true of a backup.
std::vector<std::string> warnings(const ManifestStore& manifest);

}  // namespace UnreadApps
