// The engines that tests compare with the plain model: the plain engine over PlacementTest's table,
// and in the fast build the fast one over the run's index, as it is and with less of its speed.
#pragma once

#include <cstddef>
#include <span>

#include <gtest/gtest.h>

#include "contig/contig.h"
#include "driver/velk.h"
#include "placement/plainEngine.h"
#include "tests/placement/placementTest.h"

#ifndef VELK_PLAIN_ENGINE
#include "placement/fastEngine.h"
#include "placement/readPreparer.h"
#endif

namespace velk::test {

/// An engine with groups that are mostly not full at the end of a share.
template <class Engine>
class InGroups : public Engine {
 public:
  static std::size_t group() { return 3; }

  explicit InGroups(const Engine& engine) : Engine(engine) {}
};

using PlainInGroups = InGroups<PlainEngine>;

/// An engine over what PlacementTest::assemble has indexed. One specialisation for each engine.
template <class Engine>
Engine engineOver();

template <>
inline PlainEngine engineOver<PlainEngine>() {
  return {PlainIndex(*plainHash, scaffoldInfo, scaffoldSum), Kmer};
}

template <>
inline PlainInGroups engineOver<PlainInGroups>() {
  return PlainInGroups(engineOver<PlainEngine>());
}

#ifdef VELK_PLAIN_ENGINE

using Engines = testing::Types<PlainEngine, PlainInGroups>;

#else

/// What of the preparation of reads is done before the walks; the windows do the rest.
enum class Step { kNothing, kPack, kAlign, kFilter };

/// The fast engine, whose reads are all prepared up to a step.
template <Step kLast>
class FastUpTo : public FastEngine {
 public:
  explicit FastUpTo(const FastEngine& engine) : FastEngine(engine) {}

  static void prepare(std::span<Prepared> leads, std::span<Prepared> others, bool) {
    prepare(leads);
    prepare(others);
  }

 private:
  static void prepare(std::span<Prepared> reads) {
    for (Prepared& read : reads) read.windows = 0;
    if (kLast == Step::kNothing) return;
    ReadPreparer preparer(*seedIndex, Kmer);
    preparer.pack(reads);
    if (kLast >= Step::kAlign) preparer.align(reads);
    if (kLast >= Step::kFilter) preparer.filter(reads);
  }
};

/// The fast engine without one of its steps.
template <FastSteps kSteps>
class FastWithout : public FastEngine {
 public:
  explicit FastWithout(const FastEngine&) : FastEngine(*seedIndex, Kmer, kSteps) {}
};

using FastInGroups = InGroups<FastEngine>;
using FastUnprepared = FastUpTo<Step::kNothing>;
using FastPacked = FastUpTo<Step::kPack>;
using FastAligned = FastUpTo<Step::kAlign>;
using FastFiltered = FastUpTo<Step::kFilter>;

template <>
inline FastEngine engineOver<FastEngine>() {
  return {*seedIndex, Kmer};
}

/// All others are made of the fast engine.
template <class Engine>
Engine engineOver() {
  return Engine(engineOver<FastEngine>());
}

#ifdef VELK_SHORT
using Engines = testing::Types<PlainInGroups, FastEngine, FastInGroups>;
#else
using Engines = testing::Types<
    PlainEngine, PlainInGroups, FastEngine, FastInGroups, FastUnprepared, FastPacked, FastAligned,
    FastFiltered, FastWithout<FastSteps{.groups = false}>, FastWithout<FastSteps{.leads = false}>,
    FastWithout<FastSteps{.align = false}>, FastWithout<FastSteps{.filter = false}>,
    FastWithout<FastSteps{.reversed = false}>, FastWithout<FastSteps{.diagonals = false}>>;
#endif

#endif

}  // namespace velk::test
