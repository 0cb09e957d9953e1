#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/Wording.h"
#include "TidewellCore/Platform/DateText.h"

// What a page and a text transcript say of a message alike, in the transcript's
// language. All of it is on one line, but for words.
namespace TranscriptDetails {

// What stands for a message that says nothing and has no file.
inline constexpr std::string_view withoutContent = "[media]";

std::optional<Date> dateOf(const ArchiveMessage& message);

// Where the medium of a message stands, seen from the chat's folder; absent when it is not in the export. It
// stands in that folder, unless two chats share it.
std::optional<std::string> mediaPath(const ArchiveMessage& message, const ArchiveChat& chat);

// What the message says, and that its file is not in the export; a poll's options and a file that is there stand
// elsewhere.
std::string words(const ArchiveMessage& message, const Wording& wording);

// "forwarded", "deleted later". That the phone no longer has a message is not told: it would stand on every line of
// an old year.
std::vector<std::string> marks(const ArchiveMessage& message, const Wording& wording);

// "in reply to Ana: Makes sense with all…"
std::optional<std::string> reply(const ArchiveMessage& message, const Wording& wording);
inline constexpr std::size_t longestReply = 120;  // characters of the answered message

// "Monday (1: You)", for each option of a poll.
std::vector<std::string> pollOptions(const ArchiveMessage& message, const Wording& wording);

// "👍 You and Ben, ❤️ Ana"; empty without any.
std::string reactions(const ArchiveMessage& message, const Wording& wording);

// What the preview under a text says, and where it leads; absent when the text says all of it.
struct Link {
  std::string words;
  std::string address;  // may be empty

  bool operator==(const Link&) const = default;
};
std::optional<Link> link(const ArchiveMessage& message);

// A map of the place that the message is.
std::optional<Link> map(const ArchiveMessage& message, const Wording& wording);

// Whether a page may lead there: to the web, to a mail, a call or a map, and nowhere else.
bool mayLead(std::string_view address);

}  // namespace TranscriptDetails
