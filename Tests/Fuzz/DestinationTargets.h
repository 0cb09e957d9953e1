#pragma once

#include "TidewellCore/Platform/Bytes.h"

/// The readers of what earlier exports, or somebody in their place, have left; the input is the file.
namespace DestinationTargets {

void folderManifest(ByteView input);
void preferences(ByteView input);
/// The archive's chat list, and the same bytes as a chat's data file.
void archive(ByteView input);

}  // namespace DestinationTargets
