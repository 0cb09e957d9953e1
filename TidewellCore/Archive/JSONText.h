#pragma once

#include <functional>
#include <string_view>

// Ways through JSON text that is too long to be built into values. All results
// are views into the text.
namespace JSONText {

// The value of an object's member; empty when there is none. `quotedName` is
// the name as it stands in the text, with its quotes.
std::string_view member(std::string_view object, std::string_view quotedName);

// Visits the elements of an array in order, up to the first that does not end.
void forEachElement(std::string_view array, const std::function<void(std::string_view element)>& visit);

}  // namespace JSONText
