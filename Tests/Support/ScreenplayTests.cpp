#include "Tests/Support/Screenplay.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Fixture {
namespace {

TEST(Screenplay, ReadsWhoSaysWhatAndWhen) {
  const std::vector<ScriptThread> threads = parseScreenplay(R"(
# 1@g.us
== 2001-01-02
00:01 Tia Célia: Bom dia: tudo bem?
00:01 Me: [photo] Look
    | twice
    |
    | and once more
== 2001-01-03
10:00 Me: [Plan, page 1.pdf]
# 2@s.whatsapp.net
)");
  ASSERT_EQ(threads.size(), 2U);
  EXPECT_EQ(threads[0].jid, "1@g.us");
  const std::vector<ScriptLine>& lines = threads[0].lines;
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0].date, 86'400 + 60);
  EXPECT_EQ(lines[0].speaker, "Tia Célia");
  EXPECT_EQ(lines[0].text, "Bom dia: tudo bem?");
  EXPECT_GT(lines[1].date, lines[0].date);
  EXPECT_EQ(lines[1].medium, "photo");
  EXPECT_EQ(lines[1].text, "Look\ntwice\n\nand once more");
  EXPECT_EQ(lines[2].date, 2 * 86'400 + 36'000);
  EXPECT_EQ(lines[2].medium, "Plan, page 1.pdf");
  EXPECT_EQ(lines[2].text, "");
  EXPECT_TRUE(threads[1].lines.empty());
}

TEST(Screenplay, ReadsWhatHangsOnALine) {
  const std::vector<ScriptThread> threads = parseScreenplay(R"(
# 1@g.us
== 2001-01-02
00:01 Me: [poll] Which day: Monday?
    = Monday: Me, Tia Célia
    = Never
    > Tia Célia: what: now
    + ❤️ Rafael, Me
    + 👍 120
    ~ A title — and: words
    ! starred, forwarded
)");
  ASSERT_EQ(threads[0].lines.size(), 1U);
  const ScriptLine& line = threads[0].lines[0];
  EXPECT_EQ(line.text, "Which day: Monday?");
  EXPECT_EQ(line.choices[0].words, "Monday");
  EXPECT_EQ(namesIn(line.choices[0].rest), (std::vector<std::string>{"Me", "Tia Célia"}));
  EXPECT_EQ(line.choices[1].words, "Never");
  EXPECT_EQ(namesIn(line.choices[1].rest), std::vector<std::string>());
  EXPECT_EQ(line.answer->speaker, "Tia Célia");
  EXPECT_EQ(line.answer->words, "what: now");
  EXPECT_EQ(line.reactions[0].emoji, "❤️");
  EXPECT_EQ(line.reactions[0].people, "Rafael, Me");
  EXPECT_EQ(line.reactions[1].people, "120");
  EXPECT_EQ(line.preview, "A title — and: words");
  EXPECT_EQ(line.marks, (std::vector<std::string>{"starred", "forwarded"}));
}

TEST(Screenplay, NamesTheLineItCannotRead) {
  for (const char* script :
       {"10:00 Me: before any chat", "# a\nno time", "# a\n10:00 nobody", "# a\n== soon", "# a\n10:00 Me: [photo",
        "| more of nothing", "# a\n| more of nothing", "# a\n> Me: nothing"}) {
    EXPECT_THROW(parseScreenplay(script), std::runtime_error) << script;
  }
}

}  // namespace
}  // namespace Fixture
