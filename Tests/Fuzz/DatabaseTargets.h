#pragma once

#include "TidewellCore/Platform/Bytes.h"

/// The readers of databases; the input is the database's file.
namespace DatabaseTargets {

void chatDatabase(ByteView input);
void contacts(ByteView input);
void callHistory(ByteView input);
void linkedIdentities(ByteView input);
void manifestDatabase(ByteView input);

}  // namespace DatabaseTargets
