#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveBlock.h"
#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/ArchiveChatSummary.h"
#include "TidewellCore/Platform/Json.h"

// The vocabulary of the archive's data: every record as JSON, and back
// (docs/formats/chat-archive.md). What it does not know stays in what it changes.
namespace ArchiveFormat {

// What the archive says of itself.
struct Description {
  std::string title;
  std::map<std::string, std::string, std::less<>> strings;  // the page's texts by name
  std::string timeZone;
  std::string region;  // ISO 3166 or UN M.49; "" when there is none
  std::vector<ArchiveBlock> blocks;

  bool operator==(const Description&) const = default;
};

// Texts are cleaned, times rounded to seconds that browsers know.
Json::Object json(const ArchiveMessage& message);
Json::Object json(const ArchiveChatSummary& chat);
Json::Object json(const ArchiveBlock& block);
Json::Object json(const Description& archive);

// What is absent, or of another kind than it should be, has its default value.
ArchiveMessage message(const Json::Object& json);
ArchiveChatSummary chatSummary(const Json::Object& json);
ArchiveBlock block(const Json::Object& json);

// Whether the text of a message, in whatever form, may name a medium's file;
// told without reading it, and never denied of one that does.
bool mayNameFile(std::string_view message);

template <typename Record>
using Change = std::function<void(Record&)>;

// The object with what `change` changes in its record; absent when that is
// nothing. All members that the change does not touch stay what they are.
std::optional<Json::Object> changed(const Json::Object& json, const Change<ArchiveMessage>& change);
std::optional<Json::Object> changed(const Json::Object& json, const Change<ArchiveChatSummary>& change);
std::optional<Json::Object> changed(const Json::Object& json, const Change<ArchiveBlock>& change);

}  // namespace ArchiveFormat
