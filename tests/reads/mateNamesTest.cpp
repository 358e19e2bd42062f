// The names of mates: those that become one, and those that may be mates.
#include "reads/mateNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velk::test {
namespace {

using reads::haveOneName;
using reads::mayBeMates;

// What two names become, with a bar between them; empty where they are not one.
std::string oneName(std::string_view first, std::string_view second) {
  if (!haveOneName(first, second)) return "";
  return std::string(first) + "|" + std::string(second);
}

TEST(MateNames, EqualNamesStayAsTheyAre) {
  EXPECT_EQ("a|a", oneName("a", "a"));
  EXPECT_EQ("a/1|a/1", oneName("a/1", "a/1"));
  EXPECT_EQ("a.2|a.2", oneName("a.2", "a.2"));
}

TEST(MateNames, NumbersAtTheEndAreCutOff) {
  EXPECT_EQ("a|a", oneName("a/1", "a/2"));
  EXPECT_EQ("a|a", oneName("a.1", "a.2"));
  EXPECT_EQ("a|a", oneName("a/1", "a.2"));
  EXPECT_EQ("a|a", oneName("a/1", "a"));
  EXPECT_EQ("a|a", oneName("a", "a/2"));
}

TEST(MateNames, OthersAreNotOne) {
  EXPECT_EQ("", oneName("a/2", "a/1"));
  EXPECT_EQ("", oneName("a/1", "b/2"));
  EXPECT_EQ("", oneName("a1", "a2"));
  EXPECT_EQ("", oneName("a_F", "a_R"));
  EXPECT_EQ("", oneName("/1", "/2"));  // no name would be left
  EXPECT_EQ("", oneName("", "a"));
}

TEST(MateNames, MatesByTheirLastCharacter) {
  EXPECT_TRUE(mayBeMates("a1", "a2"));
  EXPECT_TRUE(mayBeMates("a_F", "a_R"));
  EXPECT_TRUE(mayBeMates("a.f", "a.r"));
  EXPECT_TRUE(mayBeMates("a-a", "a-b"));
  EXPECT_FALSE(mayBeMates("a2", "a1"));
  EXPECT_FALSE(mayBeMates("a_R", "a_F"));
  EXPECT_FALSE(mayBeMates("a-1", "b-2"));
  EXPECT_FALSE(mayBeMates("a-1", "a-R"));
  EXPECT_FALSE(mayBeMates("a", "aa"));
  EXPECT_FALSE(mayBeMates("", "a"));
}

TEST(MateNames, WhatHasOneNameMayBeMates) {
  const std::vector<std::string> names{"",    "a",   "b",   "a/1",   "a/2",  "a.1",
                                       "a.2", "/1",  "/2",  "a1",    "a2",   "b/1",
                                       "b/2", "a_F", "a_R", "a/1/1", "a/1/2"};
  for (const std::string& first : names) {
    for (const std::string& second : names) {
      if (!oneName(first, second).empty()) {
        EXPECT_TRUE(mayBeMates(first, second)) << first << " " << second;
      }
    }
  }
}

}  // namespace
}  // namespace velk::test
