#include "run/plan.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>

#include "run/diskFile.h"
#include "run/failure.h"
#include "run/gapCounts.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

using Json = nlohmann::ordered_json;
using run::Plan;

std::string failureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const run::Failure& failure) {
    return failure.what();
  }
  return "";
}

TEST(Estimate, JobsOneAfterTheOtherAndTheLongestTask) {
  const std::vector<run::TaskEstimate> tasks{{10, 1, 0}, {30, 2, 0}};
  const run::RunEstimate plain = run::estimateRun(tasks, {4, 6, 0});
  EXPECT_DOUBLE_EQ(plain.oneRun, 53);
  const run::RunEstimate saved = run::estimateRun(tasks, {0, 0, 0});
  EXPECT_DOUBLE_EQ(saved.oneRun, 43);
  const double jobStart = (saved.inTasks - 33) / 2;
  EXPECT_GT(jobStart, 0);
  EXPECT_DOUBLE_EQ(plain.inTasks, 43 + 3 * jobStart);
}

class PlanTest : public ::testing::Test {
 protected:
  // One library of two inputs, one of single reads; values that only whole doubles keep.
  static Plan made() {
    Plan plan;
    plan.arguments.sample = "s";
    plan.arguments.mapCut = 0.1 + 0.2;
    plan.arguments.placeholders = {100, 500};
    plan.arguments.noAnchors = true;
    plan.fixed.readLength = 150;
    plan.fixed.bigGapLength = 551;
    plan.fixed.placeholderLength = 3300;
    run::Library pairs;
    pairs.name = "pe";
    pairs.kind = run::LibraryKind::kMatePairs;
    pairs.orientation = run::Orientation::kOutward;
    pairs.isMeasured = true;
    pairs.insert = 1e3 / 3;
    pairs.isInsertGiven = true;
    pairs.spread = 10.5;
    pairs.inserts[0].add(100, 7);
    pairs.inserts[1].add(3000, 2);
    pairs.inserts[1].add(70000, 1);
    run::Library single;
    single.name = "se";
    single.kind = run::LibraryKind::kSingle;
    plan.fixed.libraries = {pairs, single};
    plan.common = {{"a/assembly.fa", {12, "aa"}}, {"b.agp", {3, "bb"}}};
    plan.inputs = {{0, {{"1.fq", {1, "c"}}, {"2.fq", {2, "d"}}}, false, {}},
                   {0, {{"3.fq", {3, "e"}}}, true, {}},
                   {1, {{"4.fq", {4, "f"}}}, false, {}}};
    plan.warnings = {"one"};
    return plan;
  }

  Plan read(const std::string& text) const {
    run::writeFile(folder_.path("plan.json"), text);
    return run::readPlan(folder_.path("plan.json"));
  }

  // What is said of the plan after a change.
  std::string refusal(const std::function<void(Json&)>& change) const {
    Json json = Json::parse(run::textOfPlan(made()));
    const std::string version = json["program"]["version"];
    change(json);
    const std::string said = failureOf([&] { read(json.dump()); });
    const std::string start =
        folder_.path("plan.json") + " is no plan of velk-run " + version + ": ";
    EXPECT_TRUE(said.starts_with(start)) << said;
    return said.substr(std::min(said.size(), start.size()));
  }

  TemporaryFolder folder_;
};

TEST_F(PlanTest, WhatIsWrittenIsRead) {
  const Plan plan = made();
  const Plan again = read(run::textOfPlan(plan));
  EXPECT_EQ(again.arguments.assembly, "a/assembly.fa");
  EXPECT_EQ(again.arguments.agp, "b.agp");
  EXPECT_EQ(again.arguments.mapCut, plan.arguments.mapCut);
  EXPECT_EQ(again.arguments.placeholders, plan.arguments.placeholders);
  EXPECT_TRUE(again.arguments.noAnchors);
  EXPECT_FALSE(again.arguments.native);
  EXPECT_EQ(again.fixed.readLength, 150);
  EXPECT_EQ(again.fixed.bigGapLength, 551);
  EXPECT_EQ(again.fixed.placeholderLength, 3300U);
  ASSERT_EQ(again.fixed.libraries.size(), 2U);
  const run::Library& pairs = again.fixed.libraries[0];
  EXPECT_EQ(pairs.insert, 1e3 / 3);
  EXPECT_EQ(pairs.spread, 10.5);
  for (std::size_t n = 0; n < pairs.inserts.size(); ++n) {
    EXPECT_EQ(pairs.inserts[n].bins(), plan.fixed.libraries[0].inserts[n].bins()) << n;
  }
  EXPECT_FALSE(again.arguments.noReport);
  EXPECT_EQ(pairs.orientation, run::Orientation::kOutward);
  EXPECT_STREQ(pairs.insertSource(), "given");
  EXPECT_STREQ(pairs.orientationSource(), "measured");
  ASSERT_EQ(pairs.inputs.size(), 2U);
  EXPECT_EQ(pairs.inputs[0].second, "2.fq");
  EXPECT_TRUE(pairs.inputs[1].areInterleaved);
  EXPECT_EQ(again.inputs[2].library, 1U);
  EXPECT_EQ(again.inputs[2].files[0].identity, (run::FileIdentity{4, "f"}));
  EXPECT_EQ(again.warnings, plan.warnings);
  EXPECT_EQ(read(run::textOfPlan(plan)).checksum, again.checksum);
}

TEST_F(PlanTest, WhatIsNoPlanIsRefused) {
  EXPECT_NE(failureOf([&] { read("x"); }), "");
  EXPECT_NE(failureOf([&] { read("[]"); }), "");
  EXPECT_EQ(refusal([](Json& json) { json["schema"] = 2; }), "it was made by another version");
  EXPECT_EQ(refusal([](Json& json) { json["program"]["version"] = "0.1"; }),
            "it was made by another version");
  EXPECT_EQ(refusal([](Json& json) { json["options"]["kmer"] = 0; }), "kmer is out of its range");
  EXPECT_EQ(refusal([](Json& json) { json["options"]["min_identity"] = "1"; }),
            "min_identity is out of its range");
  EXPECT_EQ(refusal([](Json& json) { json["libraries"][0]["insert"] = -1; }),
            "insert is out of its range");
  EXPECT_EQ(refusal([](Json& json) { json["libraries"][0]["kind"] = "triples"; }),
            "kind is \"triples\"");
  EXPECT_EQ(refusal([](Json& json) { json["libraries"][0]["orientation"] = "XY"; }),
            "orientation is \"XY\"");
  EXPECT_NE(refusal([](Json& json) { json.erase("tasks"); }), "");
  EXPECT_NE(refusal([](Json& json) { json["assembly"] = 1; }), "");
}

TEST_F(PlanTest, TasksThatDoNotFitAreRefused) {
  EXPECT_EQ(refusal([](Json& json) { json["tasks"][1]["task"] = 2; }),
            "tasks are not numbered in their order");
  EXPECT_EQ(refusal([](Json& json) { json["tasks"][0]["library"] = "se"; }),
            "files do not fit their library: se");
  EXPECT_EQ(refusal([](Json& json) { json["tasks"][2]["library"] = "other"; }),
            "tasks are not in the order of the libraries: other");
  EXPECT_EQ(refusal([](Json& json) { json["tasks"][2]["library"] = "pe"; }),
            "files do not fit their library: pe");
  EXPECT_EQ(refusal([](Json& json) { json["tasks"][2]["files"] = Json::array(); }),
            "files do not fit their library: se");
  EXPECT_EQ(refusal([](Json& json) { json["tasks"][0]["interleaved"] = true; }),
            "files do not fit their library: pe");
}

TEST_F(PlanTest, NamesThatAreNoUtf8CanNotBePlanned) {
  Plan plan = made();
  plan.inputs[0].files[0].name = "\xff.fq";
  EXPECT_EQ(failureOf([&] { run::textOfPlan(plan); }),
            "a file has a name that is not UTF-8, which a plan can't hold");
}

TEST_F(PlanTest, NamesCountFromTheRoot) {
  EXPECT_EQ(run::nameFromRoot("/data/a/b.fq", "/data"), "a/b.fq");
  EXPECT_EQ(run::nameFromRoot("/data/x/../b.fq", "/data/"), "b.fq");
  EXPECT_EQ(run::nameFromRoot("/data/b.fq", "/"), "data/b.fq");
  EXPECT_EQ(run::nameFromRoot("b.fq", "."), "b.fq");
  EXPECT_EQ(failureOf([] { run::nameFromRoot("/other/b.fq", "/data"); }),
            "/other/b.fq does not lie below the root of the inputs, /data (--inputs-root)");
  EXPECT_EQ(run::fileAtRoot("a/b.fq", "."), "a/b.fq");
  EXPECT_EQ(run::fileAtRoot("a/b.fq", "/data"), "/data/a/b.fq");
}

TEST_F(PlanTest, IdentityIsSizeAndChecksumWhateverTheName) {
  const std::string large(3U << 20, 'x');
  std::string inside = large;
  std::string behind = large;
  inside[large.size() / 2] = 'y';
  behind.back() = 'y';
  const auto identity = [&](const std::string& text, run::Summed summed) {
    run::writeFile(folder_.path("file"), text);
    return run::identityOf(folder_.path("file"), summed);
  };
  for (const run::Summed summed : {run::Summed::kAll, run::Summed::kEnds}) {
    EXPECT_EQ(identity(large, summed), identity(large, summed));
    EXPECT_NE(identity(large, summed), identity(behind, summed));
    EXPECT_NE(identity("ab", summed), identity("ac", summed));
    EXPECT_EQ(identity("", summed).bytes, 0U);
  }
  EXPECT_NE(identity(large, run::Summed::kAll), identity(inside, run::Summed::kAll));
  // Of a small file both are the same bytes.
  EXPECT_EQ(identity("abc", run::Summed::kAll), identity("abc", run::Summed::kEnds));
  EXPECT_EQ(identity("abc", run::Summed::kAll).md5, "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_THROW(run::identityOf(folder_.path("gone"), run::Summed::kEnds), run::Failure);
  EXPECT_THROW(run::identityOf(folder_.path(""), run::Summed::kEnds), run::Failure);
}

TEST(GapCountsTest, CountsOfSharesAddUp) {
  std::vector<run::Library> libraries(2);
  for (run::Library& library : libraries) {
    library.insert = 400;
    library.spread = 30;
  }
  run::GapCounts whole(5, 2);
  run::GapCounts sum(5, 2);
  for (uint32_t library = 0; library < 2; ++library) {
    run::GapCounts part(5, 2);
    for (run::GapCounts* counts : {&whole, &part}) {
      for (int64_t gap = library; gap < 4; gap += 2) {
        counts->add({gap, 0, true, run::Certainty::kExact}, library);
        counts->add({gap, 1, false, run::Certainty::kExact}, library);
        for (int64_t pair = 0; pair < 3; ++pair) {
          counts->addSpan({static_cast<uint64_t>(gap), 90 - 20 * pair - gap, 200}, library);
        }
        counts->addSpan({2, 50, 180}, library);
        counts->addSpan({2, 44, 190}, library);
      }
      counts->addRecord(1);
    }
    sum.addEncoded(part.encoded(library), library, "file");
  }
  for (uint64_t gap = 0; gap < 5; ++gap) {
    for (uint64_t library = 0; library < 2; ++library) {
      for (const auto kind : {run::ReadKind::kExact, run::ReadKind::kAnchor}) {
        EXPECT_EQ(sum.count(gap, library, kind), whole.count(gap, library, kind));
      }
    }
    EXPECT_EQ(sum.spans(gap), whole.spans(gap));
    EXPECT_EQ(sum.impliedLength(gap, libraries), whole.impliedLength(gap, libraries));
    EXPECT_EQ(sum.records(gap), whole.records(gap));
  }
  EXPECT_EQ(whole.spans(2), 3U + 4 * 2);
  EXPECT_TRUE(sum.impliedLength(2, libraries).has_value());
  EXPECT_EQ(whole.count(3, 1, run::ReadKind::kAnchor), 1U);
  EXPECT_EQ(sum.records(1), 2U);
}

TEST(GapCountsTest, CountsOfOtherGapsAreRefused) {
  run::GapCounts few(2, 1);
  run::GapCounts many(3, 1);
  many.addRecord(2);
  const std::string bytes = many.encoded(0);
  const std::string message = "file has counts of other gaps than the assembly";
  EXPECT_EQ(failureOf([&] { few.addEncoded(bytes, 0, "file"); }), message);
  EXPECT_EQ(failureOf([&] { many.addEncoded(bytes + "x", 0, "file"); }), message);
  EXPECT_EQ(many.records(2), 2U);
}

}  // namespace
}  // namespace velk::test
