#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/MessageBlobs.h"
#include "Tests/Support/Screenplay.h"

namespace Fixture {

// What the tables hold of a line of a script, without its chat, its date and its sender.
struct ScriptedMessage {
  Message message;
  // "photo", "video", "voice", "audio", "sticker" or a document's name; empty without a file.
  std::string file;
  // Whose member row the message has, when it is not the speaker's: who was added, say.
  std::string member;
  // There only when something beside a file's own facts is to be kept.
  std::optional<MediaItem> item;
  std::optional<LinkItem> link;
  // Without date, ID and participants.
  std::optional<Call> call;
};

// The JID of somebody by the name that scripts use; empty for "Me".
using JIDOfName = std::function<std::string(const std::string&)>;

// `answered` is what the line answers, in full.
ScriptedMessage scriptedMessage(const ScriptLine& line, const std::optional<ReplyRow>& answered,
                                const JIDOfName& jidOf);

// Whether its message carries a file that the phone has.
bool hasFile(const ScriptLine& line);

// The copy of a line that comes along with its answer.
Protobuf copyOf(const ScriptLine& line);

}  // namespace Fixture
