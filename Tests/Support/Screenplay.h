#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Fixture {

// One message that a script gives.
struct ScriptLine {
  // In seconds since 2001-01-01 UTC.
  double date = 0;
  // "Me" is the phone's owner.
  std::string speaker;
  // "photo", "video", "voice", "audio", "sticker" or a document's name; empty for text alone.
  std::string medium;
  std::string text;
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
//
// Throws std::runtime_error naming the line that is none of these.
std::vector<ScriptThread> parseScreenplay(std::string_view script);

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
