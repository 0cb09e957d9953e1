#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Platform/Json.h"

// Reads a Chat Archive as its page does.
namespace ExportTest {

// The entries of the archive's chat list, in its order.
std::vector<Json::Object> listedChats(const std::filesystem::path& contentRoot);
// The names in the archive's chat list, in its order.
std::vector<std::string> listedNames(const std::filesystem::path& contentRoot);
// The entry of that name; fails the test and is empty when there is none.
Json::Object listedChat(const std::filesystem::path& contentRoot, const std::string& name);
// The messages of the chat of that name.
std::vector<Json::Object> messagesOf(const std::filesystem::path& contentRoot, const std::string& name);
// The medium of a message; empty when it has none.
Json::Object mediumOf(const Json::Object& message);
// A text of an object; empty when it has none of that name.
std::string textIn(const Json::Object& object, const std::string& key);

// Fails the test for every file that the page in `destination` or the archive's
// data name and that is not there, and for data that cannot be read.
void expectWholeArchive(const std::filesystem::path& destination);

// Everything that an export can be asked for.
inline const ExportOptions everything = ExportOptions::defaultOptions();

// A profile picture that ends in `rest`.
Fixture::Bytes picture(const std::string& rest);
// The small backup with a text to each message and pictures of Ana and the group.
Fixture::BackupContents talkingBackup(bool isEncrypted = false);
std::set<std::string> namesIn(const std::filesystem::path& folder);
// Where the medium of a chat's first message stands.
std::string linkOfFirst(const Scene& scene, const std::string& chat);
// The JSON of the medium of a chat's message, by the message's place.
std::string medium(const Scene& scene, const std::string& chat, std::size_t message);

}  // namespace ExportTest
