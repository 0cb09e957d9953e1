#pragma once

#include "TidewellCore/Platform/PropertyList.h"

// Reads the XML form of a property list (Apple's PropertyList-1.0.dtd).
// Entity declarations are refused and nesting is capped. Throws PropertyListError.
PropertyList parseXMLPropertyList(ByteView data);
