#include "TidewellCore/Platform/Boxed.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Box = Boxed<std::string>;

TEST(Boxed, IsEmptyUntilThereIsAValue) {
  Box box;
  EXPECT_FALSE(box);
  EXPECT_EQ(box.ensured(), "");
  EXPECT_TRUE(box);
  box.ensured() += "a";
  EXPECT_EQ(*box, "a");
  EXPECT_EQ(sizeof(Box), sizeof(void*));
}

TEST(Boxed, IsCopiedAndComparedAsItsValue) {
  const Box box(std::string("a"));
  Box copy = box;
  EXPECT_EQ(copy, box);
  copy->append("b");
  EXPECT_EQ(*box, "a");
  EXPECT_NE(copy, box);
  EXPECT_NE(box, Box());
  EXPECT_EQ(Box(), Box());
  copy = box;
  EXPECT_EQ(copy, box);
  copy = Box();
  EXPECT_FALSE(copy);
}

}  // namespace
