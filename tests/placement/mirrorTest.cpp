// Reverse placement against forward placement in the mirrored assembly.
//
// Turning an assembly round (contigs reverse-complemented and in reverse order) together with
// anchor and mate must turn the records round and change nothing else, but for the one rule that
// the two directions do not share.
#include <rapidcheck.h>

#include <algorithm>

#include "tests/placement/pairedTest.h"

namespace velk::test {
namespace {

constexpr int kAnchor = 100;

struct Scene {
  TestScaffold scaffold;
  std::size_t contig;  // the anchor's
  int offset;          // of its first base
  std::string anchor;
  std::string mate;
};

int from(int least, int most) {
  return *rc::gen::inRange(least, most + 1);
}

Scene randomScene() {
  Scene scene;
  const int contigs = from(2, 5);
  for (int c = 0; c < contigs; ++c) {
    const auto length = static_cast<std::size_t>(from(120, 320));
    scene.scaffold.push_back(
        {randomBases(length, 500U + static_cast<unsigned>(c)), from(-50, 500)});
  }
  scene.contig = static_cast<std::size_t>(from(0, contigs - 1));
  const std::string& bases = scene.scaffold[scene.contig].bases;
  scene.offset = from(-60, static_cast<int>(bases.size()) - 40);
  scene.anchor = readAt(bases, scene.offset, kAnchor);
  scene.mate = randomBases(static_cast<std::size_t>(from(60, 140)), 599);
  return scene;
}

TestScaffold mirrored(const TestScaffold& scaffold) {
  TestScaffold reversed;
  for (std::size_t c = scaffold.size(); c > 0; --c) {
    const int64_t gapBehind = c == scaffold.size() ? 0 : scaffold[c].gapBefore;
    reversed.push_back({reverseComplement(scaffold[c - 1].bases), gapBehind});
  }
  return reversed;
}

TestRecord mirrored(TestRecord record, std::size_t contigs) {
  const auto gap = static_cast<int64_t>(record.gapsSize);
  const auto length = static_cast<int64_t>(record.read.size());
  record.read = reverseComplement(record.read);
  record.frontContig = contigs - 2 - record.frontContig;
  record.positionInGap = gap - record.positionInGap - length;
  record.gapNum = contigs - 2 - record.gapNum;
  return record;
}

class Mirror : public PairedTest {};

TEST_F(Mirror, ReverseIsForwardMirrored) {
  const auto property = [this] {
    const Scene scene = randomScene();
    const std::size_t contigs = scene.scaffold.size();
    insertLength = from(0, 900);
    readLen = from(30, 160);
    BIGGAPLEN = from(200, 900);

    assemble({scene.scaffold});
    const Outcome forwards = forward(scene.anchor, scene.mate);
    assemble({mirrored(scene.scaffold)});
    const Outcome backwards =
        reverse(reverseComplement(scene.anchor), reverseComplement(scene.mate));

    const int64_t kmers = kAnchor - Kmer + 1;
    RC_ASSERT((forwards.stop == kmers) == (backwards.stop == kmers));
    Records expected;
    for (const TestRecord& record : forwards.records) {
      expected.push_back(mirrored(record, contigs));
    }
    // Not shared: an anchor over the right edge of the last but one contig has no record in
    // reverse. Mirrored, that is one over the left edge of the second contig.
    if (scene.contig == 1 && scene.offset < 0 && !expected.empty()) expected.pop_back();
    RC_ASSERT(backwards.records == expected);
  };
  EXPECT_TRUE(rc::check("reverse placement is forward placement mirrored", property));
}

}  // namespace
}  // namespace velk::test
