#include "TidewellCore/Platform/Precondition.h"

#include <gtest/gtest.h>

namespace {

TEST(Precondition, LetsAKeptContractPass) {
  precondition(true, "never said");
  SUCCEED();
}

TEST(PreconditionDeathTest, ABrokenContractStopsTheProgramAndSaysWhich) {
  EXPECT_DEATH(precondition(false, "the limit is at least 1"), "Programming fault: the limit is at least 1");
}

}  // namespace
