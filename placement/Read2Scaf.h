// Read placement: whether, and where, a read or a read pair lies at a gap.
//
// A worker calls FindReads once per batch. These functions pass the run's globals to
// placement/batchScan.h (a batch), placement/place.h (one read or pair) and placement/edgeCheck.h
// (one read on one contig; it also has the reverse complements). They run on the workers. They only
// read the index, the scaffold model and the run parameters. Worker t writes its own row of records
// (streaming/readBuffer.h), its own foundReadNum and, for large inserts, its own share of the read
// buffer.
#pragma once

#include <cstdint>
#include <string>

#include "placement/edgeCheck.h"

namespace velk {

/// Pairs of larger inserts, in bases, point outwards.
inline constexpr int kLongestShortInsert = 1000;

/// The options of placement as the run's globals have them now.
PlacementOptions optionsOfRun();

/// Scans worker t's share (entries t, t + threadNum, ...) of the current batch and stores the
/// number of records it wrote in foundReadNum[t].
void FindReads(int t);

/// Places one read over a contig's end next to a gap. Writes at most one record.
/// i (out): the window at which the walk over the read's k-mers stopped; read.size() - Kmer + 1 if
/// it did not. n (inout): records in row t. REQUIRES: read.size() >= Kmer, no N in the read.
void checkSingleRead(int64_t& i, const std::string& read, uint32_t& n, int t);

/// Places `anchor` on a contig with its mate downstream, in the gap to the contig's right or the
/// one after that. Writes at most three records: mate, mate in the gap beyond, anchor. i (out): the
/// window at which the walk stopped; anchor.size() - Kmer + 1 if it did not. REQUIRES:
/// anchor.size() >= Kmer; both reads are on the strand on which they are expected.
void checkForwardRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t);

/// The mirror image of checkForwardRead: the mate lies upstream, to the left of the contig.
void checkReverseRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t);

// The three checks of placement/edgeCheck.h with the run's options: 1 accept, 0 refuse.

/// checkOverRightEnd.
int MapRead2Lcontig(const std::string& contig, const std::string& read, int64_t offset);

/// checkOverLeftEnd.
int MapRead2Rcontig(const std::string& contig, const std::string& read, int64_t offset);

/// checkOnContig.
int MapRead2Contig(const std::string& contig, const std::string& read, int64_t offset);

}  // namespace velk
