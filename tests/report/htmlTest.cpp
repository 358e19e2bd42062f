#include "report/html.h"

#include <gtest/gtest.h>

#include "report/svg.h"

namespace velk::test {
namespace {

using namespace std::string_literals;
using report::escaped;

TEST(HtmlTest, MarksOfHtmlBecomeText) {
  EXPECT_EQ(escaped("<script>a(\"b\") & 'c'</script>"),
            "&lt;script&gt;a(&quot;b&quot;) &amp; &#39;c&#39;&lt;/script&gt;");
}

TEST(HtmlTest, ControlCharactersAndWhatTurnsTheDirectionAreReplaced) {
  EXPECT_EQ(escaped("a\0b\tc\nd\x1B[31m\x7F"s), "a\uFFFDb\uFFFDc\uFFFDd\uFFFD[31m\uFFFD");
  EXPECT_EQ(escaped("\u202Eabc\u200B\u2066\u0085\uFEFF"), "\uFFFDabc\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST(HtmlTest, WhatIsNoUtf8IsReplacedByteByByte) {
  EXPECT_EQ(escaped("a\xFFz"), "a\uFFFDz");
  EXPECT_EQ(escaped("\xC3"), "\uFFFD");                      // cut short
  EXPECT_EQ(escaped("\xC0\xBC"), "\uFFFD\uFFFD");            // '<' in two bytes
  EXPECT_EQ(escaped("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");  // half of a pair
  EXPECT_EQ(escaped("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(escaped("\xE4<b>"), "\uFFFD&lt;b&gt;");
  EXPECT_EQ(escaped("\u00E4\u20AC\U0001F9EC"), "\u00E4\u20AC\U0001F9EC");
}

TEST(HtmlTest, LongTextIsCutBetweenCharacters) {
  EXPECT_EQ(escaped("abc", 3), "abc");
  EXPECT_EQ(escaped("abcd", 3), "abc\u2026");
  EXPECT_EQ(escaped("\u00E4\u00E4\u00E4", 2), "\u00E4\u00E4\u2026");
  EXPECT_EQ(escaped("&&&", 2), "&amp;&amp;\u2026");
  EXPECT_EQ(escaped(std::string(10000, '<'), 120).size(), 120U * 4 + 3);
}

TEST(HtmlTest, Numbers) {
  EXPECT_EQ(report::brief(12), "12");
  EXPECT_EQ(report::brief(12.34), "12.3");
  EXPECT_EQ(report::brief(-0.5), "-0.5");
  EXPECT_EQ(report::brief(-0.01), "0");
  EXPECT_EQ(report::percentText(0.1234), "12 %");
  EXPECT_EQ(report::percentText(0.0123), "1.2 %");
  EXPECT_EQ(report::percentText(0), "0 %");
  EXPECT_EQ(report::percentText(1), "100 %");
  EXPECT_EQ(report::shortNumber(950), "950");
  EXPECT_EQ(report::shortNumber(1500), "1.5k");
  EXPECT_EQ(report::shortNumber(2e6), "2M");
}

TEST(SvgTest, LinearScale) {
  const report::Scale scale = report::Scale::linear(0, 50, 100, 200);
  EXPECT_DOUBLE_EQ(scale.at(25), 150);
  std::vector<double> values;
  for (const report::Tick& tick : scale.ticks(5)) values.push_back(tick.value);
  EXPECT_EQ(values, (std::vector<double>{0, 10, 20, 30, 40, 50}));
}

TEST(SvgTest, LogarithmicScale) {
  const report::Scale scale = report::Scale::logarithmic(1, 10000, 0, 400);
  EXPECT_DOUBLE_EQ(scale.at(100), 200);
  EXPECT_DOUBLE_EQ(scale.at(0), 0);  // what is smaller lies at the lower end
  std::vector<std::string> labels;
  for (const report::Tick& tick : scale.ticks(5)) labels.push_back(tick.label);
  EXPECT_EQ(labels, (std::vector<std::string>{"1", "10", "100", "1k", "10k"}));
}

TEST(SvgTest, EqualDotsCountOnce) {
  report::Dots dots;
  dots.add(10, 20);
  dots.add(10.1, 20.1);
  dots.add(11, 20);
  EXPECT_EQ(dots.path(), "M10 20h0M11 20h0");
}

TEST(SvgTest, DotsBeyondAnyNumberAreShort) {
  report::Dots dots;
  for (int y = 0; y < 400; ++y) {
    for (int x = 0; x < 1000; ++x) dots.add(x, y);
  }
  EXPECT_LT(dots.path().size(), 100000U);
  EXPECT_GT(dots.path().size(), 20000U);
}

TEST(SvgTest, LabelsAreEscaped) {
  report::Svg svg(10, 10, "\"><script>");
  EXPECT_EQ(std::move(svg).finish(),
            "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 10 10\" role=\"img\" "
            "aria-label=\"&quot;&gt;&lt;script&gt;\"></svg>");
}

}  // namespace
}  // namespace velk::test
