#include "Tidewell/Services/ScopedAccess.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScopedAccessTest : public testing::Test {
 protected:
  std::unique_ptr<ScopedAccess> access(const char* folder, bool accessed) {
    return std::make_unique<ScopedAccess>(
        folder, accessed, [this](const std::filesystem::path& url) { stopped_.push_back(url.string()); });
  }

  std::vector<std::string> stopped_;
};

TEST_F(ScopedAccessTest, TellsWhatItWasMadeWith) {
  const auto started = access("/backups", true);
  EXPECT_EQ(started->url(), "/backups");
  EXPECT_TRUE(started->accessed());
  EXPECT_FALSE(access("/backups", false)->accessed());
}

TEST_F(ScopedAccessTest, LastsAsLongAsItLives) {
  auto started = access("/backups", true);
  EXPECT_THAT(stopped_, IsEmpty());
  started.reset();
  EXPECT_THAT(stopped_, ElementsAre("/backups"));
}

TEST_F(ScopedAccessTest, StopsNothingThatNeverStarted) {
  access("/backups", false).reset();
  EXPECT_THAT(stopped_, IsEmpty());
}

TEST_F(ScopedAccessTest, ReplacingItEndsTheFormerAccess) {
  auto held = access("/old", true);
  held = access("/new", true);
  EXPECT_THAT(stopped_, ElementsAre("/old"));
  held.reset();
  EXPECT_THAT(stopped_, ElementsAre("/old", "/new"));
}

TEST_F(ScopedAccessTest, NeedsNoWayToStop) { EXPECT_NO_THROW(ScopedAccess("/backups", true, {})); }

}  // namespace
