// What an engine of placement is, and which one velk is built with.
//
// An engine says which windows of a read are hits. It is a template argument, a class with these
// members. Each thread has an object of its own.
//   struct Prepared { const std::string* bases; ... };   a read, and what the engine knows of it;
//                                        nothing is known of a Prepared{}
//   std::size_t group() const;           number of entries that are prepared together
//   void prepare(std::span<Prepared> leads, std::span<Prepared> others, bool isReversedFirst);
//                                        prepares the reads to which `bases` points, and discards
//                                        the previous ones. Leads are walked over first, their
//                                        reverse complements first if isReversedFirst
//   int64_t visitHits(Strand& strand, Visit visit);      visitUniqueHits (placement/kmerWalk.h) of
//                                        a strand (ReadStrand, placement/place.h), at most once
//                                        for each. The string to which `bases` points may have
//                                        changed since prepare()
#pragma once

#ifdef VELK_PLAIN_ENGINE
#include "placement/plainEngine.h"
#else
#include "placement/fastEngine.h"
#endif

namespace velk {

#ifdef VELK_PLAIN_ENGINE
using Engine = PlainEngine;
#else
using Engine = FastEngine;
#endif

/// The engine over the run's index and model. REQUIRES: both are built.
Engine engineOfRun();

}  // namespace velk
