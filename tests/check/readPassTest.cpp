#include "check/readPass.h"

#include <gtest/gtest.h>

namespace velk::check {
namespace {

TEST(AreMates, EqualNames) {
  EXPECT_TRUE(areMates("@a:1:2", "@a:1:2"));
  EXPECT_TRUE(areMates("@a:1:2 1:N:0", "@a:1:2 2:N:0"));
  EXPECT_TRUE(areMates(">a\tx", ">a\ty"));
}

TEST(AreMates, NamesThatTellTheMateInTheirLastCharacter) {
  EXPECT_TRUE(areMates("@a/1", "@a/2"));
  EXPECT_TRUE(areMates("@a.f", "@a.r"));
  EXPECT_TRUE(areMates("@a_F x", "@a_R y"));
}

TEST(AreMates, OtherNames) {
  EXPECT_FALSE(areMates("@a/2", "@a/1"));
  EXPECT_FALSE(areMates("@a/1", "@b/2"));
  EXPECT_FALSE(areMates("@a/1", "@a/12"));
  EXPECT_FALSE(areMates("@read8", "@read9"));
  EXPECT_FALSE(areMates("@", "@a"));
}

}  // namespace
}  // namespace velk::check
