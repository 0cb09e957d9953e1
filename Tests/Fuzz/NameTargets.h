#pragma once

#include "TidewellCore/Platform/Bytes.h"

/// What makes names for files and folders out of what strangers wrote.
namespace NameTargets {

/// The input is a name, or several to be told apart, one a line.
void fileNaming(ByteView input);
/// The input has a chat a line: JID, name, the folder that is remembered for it and one that is there.
void folderAllocation(ByteView input);

}  // namespace NameTargets
