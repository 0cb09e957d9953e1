#include "TidewellCore/Platform/Cancellation.h"

#include <gtest/gtest.h>

#include "Tests/Support/Failures.h"

namespace {

TEST(Cancellation, AnEmptyCheckNeverCancels) { EXPECT_NO_THROW(throwIfCancelled({})); }

TEST(Cancellation, GoesOnWhileTheCheckSaysNo) {
  EXPECT_NO_THROW(throwIfCancelled([] { return false; }));
}

TEST(Cancellation, EndsTheWorkWhenTheCheckSaysYes) {
  EXPECT_THAT([] { throwIfCancelled([] { return true; }); }, Fixture::failsWith(TidewellError::cancelled()));
}

}  // namespace
