#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveDetails.h"
#include "TidewellCore/Archive/Wording.h"

// The facts of a kind as the archive has them (`info` in docs/formats/chat-archive.md),
// and what transcripts ask of them.
namespace MessageInfo {

ArchiveKind kindOf(const MessageContent& content);
Json::Object of(const MessageContent& content, const Wording& wording);

struct Choice {
  std::string words;
  std::vector<std::string> names;  // of those who voted for it

  bool operator==(const Choice&) const = default;
};

// What is absent, or of another type than it should be, is left empty.
std::string question(const Json::Object& info);
std::vector<Choice> choices(const Json::Object& info);  // of a poll, in their order
MissingMedia missing(const Json::Object& info);
std::optional<std::string> caption(const Json::Object& info);
std::optional<LinkPreview> link(const Json::Object& info);
std::optional<Coordinates> coordinates(const Json::Object& info);

}  // namespace MessageInfo
