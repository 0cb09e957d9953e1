#pragma once

#include "TidewellCore/Platform/PropertyList.h"

// Reads version 00 of the binary property-list format, as documented in the
// comments of Apple's open-source CFBinaryPList.c. Every offset and count is
// checked against the data, objects are read once each and shared, circular
// references are refused. Throws PropertyListError.
PropertyList parseBinaryPropertyList(ByteView data);
