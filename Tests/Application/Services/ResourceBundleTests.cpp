#include "Tidewell/Services/ResourceBundle.h"

#include <gmock/gmock.h>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

using std::filesystem::path;
using testing::ElementsAre;

class ResourceBundleTest : public testing::Test {
 protected:
  path makeBundle(const char* folder) {
    const path bundle = folder_ / folder / "Tidewell_Tidewell.bundle";
    std::filesystem::create_directories(bundle);
    return bundle;
  }
  path find() { return ResourceBundle::find({folder_ / "first", folder_ / "second", folder_ / "third"}); }

  Fixture::TemporaryDirectory folder_;
};

TEST_F(ResourceBundleTest, LooksAmongTheResourcesFirst) {
#ifdef __APPLE__
  constexpr const char* resources = "/app/bin/../Resources";
#else
  constexpr const char* resources = "/app/bin/Resources";
#endif
  EXPECT_THAT(ResourceBundle::searchFolders("/app/bin"),
              ElementsAre(path(resources), path("/app/bin/../share/tidewell"), path("/app/bin")));
}

TEST_F(ResourceBundleTest, TakesTheFirstFolderThatHasIt) {
  const path last = makeBundle("third");
  EXPECT_EQ(find(), last);
  const path middle = makeBundle("second");
  EXPECT_EQ(find(), middle);
  const path first = makeBundle("first");
  EXPECT_EQ(find(), first);
}

TEST_F(ResourceBundleTest, PassesOverAFileOfItsName) {
  Fixture::writeFile(folder_ / "first" / "Tidewell_Tidewell.bundle", "no folder");
  const path bundle = makeBundle("second");
  EXPECT_EQ(find(), bundle);
}

TEST_F(ResourceBundleTest, PassesOverAFolderThatCannotBeLookedInto) {
  Fixture::writeFile(folder_ / "first", "no folder either");
  const path bundle = makeBundle("third");
  EXPECT_EQ(find(), bundle);
}

using ResourceBundleDeathTest = ResourceBundleTest;

TEST_F(ResourceBundleDeathTest, StopsTheProgramWithoutABundle) {
  // Between the line's ends nothing but the message.
  EXPECT_DEATH(find(), "^unable to find bundle named Tidewell_Tidewell\n$");
  EXPECT_DEATH(ResourceBundle::find({}), "^unable to find bundle named Tidewell_Tidewell\n$");
}

}  // namespace
