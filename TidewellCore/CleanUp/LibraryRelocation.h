#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

// An export's library whose files go to other places afterwards.
namespace LibraryRelocation {

// Where something stands now, "folder/file" from the content root; absent when it has not moved.
using NewPlace = std::function<std::optional<std::string>(const std::string& formerPlace)>;

// Makes what the library knows of the phone's media point at the new places, all of it or nothing. Called again, it
// changes nothing; where there is no library none is made. One that cannot be used stays as it is: a sentence of
// that for people, in English, else absent. Throws what the database and the file system report.
std::optional<std::string> rewrite(const std::filesystem::path& contentRoot, const NewPlace& newPlace);

}  // namespace LibraryRelocation
