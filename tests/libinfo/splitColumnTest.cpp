// Splitting of key=value lines.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <utility>

#include "libinfo/libinfo.h"

namespace velk::test {
namespace {

using KeyAndValue = std::pair<std::string, std::string>;

// The key and the value of `line`; a test failure when it has none.
KeyAndValue split(const std::string& line) {
  KeyAndValue parts;
  EXPECT_TRUE(splitColumn(line, parts.first, parts.second)) << line;
  return parts;
}

TEST(SplitColumn, SplitsAtTheFirstEqualsSign) {
  EXPECT_EQ(KeyAndValue("avg_ins", "500"), split("avg_ins=500"));
  EXPECT_EQ(KeyAndValue("q1", "a=b=c"), split("q1=a=b=c"));
  EXPECT_EQ(KeyAndValue("", "=="), split("==="));
}

TEST(SplitColumn, KeyAndValueMayBeEmpty) {
  EXPECT_EQ(KeyAndValue("f", ""), split("f="));
  EXPECT_EQ(KeyAndValue("", "a.fa"), split("=a.fa"));
  EXPECT_EQ(KeyAndValue("", ""), split("="));
}

TEST(SplitColumn, NothingIsTrimmed) {
  EXPECT_EQ(KeyAndValue(" avg_ins ", " 500\t"), split(" avg_ins = 500\t"));
}

TEST(SplitColumn, LineWithoutEqualsSignIsNoKeyLine) {
  std::string id = "id";
  std::string value = "value";
  EXPECT_FALSE(splitColumn("avg_ins 500", id, value));
  EXPECT_FALSE(splitColumn("", id, value));
  EXPECT_EQ("id", id);
  EXPECT_EQ("value", value);
}

TEST(SplitColumn, LongValueLosesItsCarriageReturn) {
  EXPECT_EQ(KeyAndValue("f", "31"), split("f=31\r"));
  EXPECT_EQ(KeyAndValue("f", "a.fa"), split("f=a.fa\r"));
}

TEST(SplitColumn, ShortValueKeepsCarriageReturn) {
  EXPECT_EQ(KeyAndValue("f", "3\r"), split("f=3\r"));
  EXPECT_EQ(KeyAndValue("f", "\r"), split("f=\r"));
}

TEST(SplitColumn, OnlyTheLastCarriageReturnIsDropped) {
  EXPECT_EQ(KeyAndValue("f", "a\r"), split("f=a\r\r"));
  EXPECT_EQ(KeyAndValue("f", "a\rb"), split("f=a\rb"));
  EXPECT_EQ(KeyAndValue("\r", "abc"), split("\r=abc"));
}

RC_GTEST_PROP(SplitColumn, GivesBackKeyAndValue, (const std::string& anyId, std::string value)) {
  std::string id = anyId;
  std::erase(id, '=');
  if (value.size() >= 3 && value.back() == '\r') value.back() = 'r';
  std::string idOut;
  std::string valueOut;
  std::string line = id;
  RC_ASSERT(splitColumn(line.append("=").append(value), idOut, valueOut));
  RC_ASSERT(idOut == id);
  RC_ASSERT(valueOut == value);
}

RC_GTEST_PROP(SplitColumn, DropsOneCarriageReturnOfALongValue, (const std::string& value)) {
  std::string idOut;
  std::string valueOut;
  RC_ASSERT(splitColumn("f=" + value + "\r", idOut, valueOut));
  RC_ASSERT(valueOut == (value.size() >= 2 ? value : value + "\r"));
}

}  // namespace
}  // namespace velk::test
