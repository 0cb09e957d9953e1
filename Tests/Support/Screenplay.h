#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Fixture {

// What a line answers: the newest line before it of that speaker that begins so, or, where
// there is none, one that the phone has not kept.
struct ScriptAnswer {
  std::string speaker;
  std::string words;
};

struct ScriptReaction {
  std::string emoji;
  // Names, or how many there are where nobody is named.
  std::string people;
};

// An option of a poll and who voted for it, or a button and where it leads.
struct ScriptChoice {
  std::string words;
  std::string rest;
};

// One message that a script gives.
struct ScriptLine {
  // In seconds since 2001-01-01 UTC.
  double date = 0;
  // "Me" is the phone's owner.
  std::string speaker;
  // "photo", "video", "voice", a document's name, or what the line is instead of a text, as
  // ScriptedMessage.cpp lists them; empty for text alone.
  std::string medium;
  std::string text;
  std::optional<ScriptAnswer> answer;
  std::vector<ScriptReaction> reactions;
  std::vector<ScriptChoice> choices;
  // "starred", "forwarded"
  std::vector<std::string> marks;
  // "Title — summary" of the page that the text links to.
  std::string preview;
};

struct ScriptThread {
  std::string jid;
  std::vector<ScriptLine> lines;
};

// Reads a screenplay:
//
//   # 15550002222@s.whatsapp.net      the chat whose messages follow
//   == 2024-05-24                     the day, in UTC
//   09:12 Me: [photo] Look at this    what is said, a medium first if there is one
//       | and this                    one more line of the same message
//       > Rafael: where are           what it answers
//       + ❤️ Me, Rafael               a reaction, and whose
//       = Monday: Me, Rafael          an option of a poll, and whose; a button, and where it leads
//       ~ The lighthouse — A film     the preview of a link
//       ! starred, forwarded          marks
//
// Throws std::runtime_error naming the line that is none of these.
std::vector<ScriptThread> parseScreenplay(std::string_view script);

// The parts of a list "Me, Rafael".
std::vector<std::string> namesIn(std::string_view list);

// A line and the chat it is said in.
struct ScriptCue {
  std::string jid;
  ScriptLine line;
};

// The lines of all threads by date.
std::vector<ScriptCue> cuesInOrder(const std::vector<ScriptThread>& threads);

// The threads that the newest messages of the sample are taken from.
std::vector<ScriptThread> sampleScreenplay();

}  // namespace Fixture
