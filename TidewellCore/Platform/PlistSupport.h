#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TidewellCore/Platform/PropertyList.h"

// Typed readers of property lists. A value is the result of a look-up and may be null.
namespace PlistSupport {

// A property-list file whose root is a dictionary. Throws TidewellError::ioFailure
// for any other root, and passes on what the file system or the parser reports.
PropertyListDictionary dictionary(const std::filesystem::path& file);

// Text that is not empty.
std::optional<std::string> string(const PropertyList* value);
// A boolean, a number other than zero, or the text "1", "true" or "yes" in any letter case.
bool boolean(const PropertyList* value);
// A date; a date written as text is none.
std::optional<Date> date(const PropertyList* value);
// Raw bytes, or null. Valid as long as the value.
const Bytes* data(const PropertyList* value);

}  // namespace PlistSupport
