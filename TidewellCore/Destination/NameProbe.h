#pragma once

#include <filesystem>

#include "TidewellCore/PortableNames.h"

// Which names a folder's file system takes, found out by trying: what it calls
// itself says little, since drives are mounted with rules of many kinds.
namespace NameProbe {

// Makes a hidden working folder in `folder` and removes it; the folder keeps its date. Throws what the
// file system reports when it takes no names at all.
NameForm formFor(const std::filesystem::path& folder);

}  // namespace NameProbe
