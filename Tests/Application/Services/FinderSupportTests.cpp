#include "Tidewell/Services/FinderSupport.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

constexpr const char* older = "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";
constexpr const char* newer = "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?Privacy_AllFiles";

// The panes that are asked for when only `known` opens.
std::vector<std::string> askedFor(const std::string& known) {
  std::vector<std::string> asked;
  FinderSupport::openFirstPane({.openURL = [&](const std::string& url) {
    asked.push_back(url);
    return url == known;
  }});
  return asked;
}

TEST(FinderSupport, AsksForOnePaneWhenItOpens) { EXPECT_THAT(askedFor(older), ElementsAre(older)); }

TEST(FinderSupport, AsksForTheSecondPaneWhenTheFirstDoesNotOpen) {
  EXPECT_THAT(askedFor(newer), ElementsAre(older, newer));
}

TEST(FinderSupport, GivesUpAfterTheSecondPane) { EXPECT_THAT(askedFor("neither"), ElementsAre(older, newer)); }

TEST(FinderSupport, DoesNothingWhereNothingCanOpenAPane) { EXPECT_NO_THROW(FinderSupport::openFirstPane({})); }

TEST(FinderSupport, AsksForNothingWhereThereAreNoSuchPanes) {
  int asked = 0;
  FinderSupport::openFullDiskAccessSettings({.openURL = [&](const std::string&) {
    ++asked;
    return true;
  }});
#ifdef __APPLE__
  EXPECT_EQ(asked, 1);
#else
  EXPECT_EQ(asked, 0);
#endif
}

}  // namespace
