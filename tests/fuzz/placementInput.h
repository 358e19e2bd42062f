// An assembly, parameters and reads made of the bytes of a fuzz input.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/fuzz.h"
#include "tests/placement/plainPlacement.h"

namespace velk::fuzz {

struct PlacementInput {
  std::vector<test::TestScaffold> assembly;
  test::PlainSettings settings;
  int workers = 1;
  std::vector<std::string> reads;  // a single-end batch
  std::vector<std::string> first;  // a batch of pairs
  std::vector<std::string> second;
};

/// Eight bytes choose the parameters; every line behind them adds something, by its first letter.
/// Numbers are bytes as Input::next() takes them.
///   >                    a scaffold
///   = GAP LETTERS        a contig as it stands
///   + GAP LENGTH SEED    a contig of random bases
///   * CONTIG FROM LENGTH a stretch of an earlier contig, added to the last one; reversed when
///                        LENGTH is odd
///   r CONTIG OFFSET LENGTH FLAW TURN              a read that starts at OFFSET of a contig
///   p CONTIG OFFSET LENGTH FLAW TURN MATE DELTA   a pair, a fragment of the insert's length +
///   DELTA R LETTERS            a read as it stands, and a pair of it and the read before
/// FLAW is the place of a wrong base, 0 for none; a TURN of 1 reads the other strand, of 2 leaves a
/// letter that is no base, of 4 makes the second half another read's.
PlacementInput placementInput(Input input);

}  // namespace velk::fuzz
