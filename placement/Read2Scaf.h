// Read placement: whether, and where, a read or a read pair falls at a gap.
//
// A worker calls FindReads once per batch. These functions are thin faces over the run's globals;
// what they do stands in placement/batchScan.h (a batch), placement/place.h (one read or pair) and
// placement/verdict.h (one hit). Everything here runs on the workers: the index, the scaffold model
// and the run parameters are only read, and worker t writes nothing but its own row of records
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

/// Places one read across a contig end next to a gap. Writes at most one record.
/// i (out): where the walk over the read's k-mers stopped; read.size() - Kmer + 1 when no k-mer
/// placed the read. n (inout): records in row t. REQUIRES: read.size() >= Kmer, no N in the read.
void checkSingleRead(int64_t& i, const std::string& read, uint32_t& n, int t);

/// Anchors `anchor` on a contig with its mate downstream, in the gap behind the contig or the one
/// after that. Writes at most three records: mate, mate in the gap beyond, anchor.
/// i (out): where the walk stopped; anchor.size() - Kmer + 1 when this try accepted no hit.
/// REQUIRES: anchor.size() >= Kmer; both reads on the strand on which they are expected.
void checkForwardRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t);

/// The mirror image of checkForwardRead: the mate lies upstream, in front of the anchor's contig.
void checkReverseRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t);

/// Writes the reverse complement of `src` to `dest` (inout), in upper case, N as A.
/// REQUIRES: dest.size() == src.size().
void ReverseComplementSeq(std::string& dest, const std::string& src);

/// Makes a pair that points outwards one that points inwards: a becomes the reverse complement of
/// the old b, b that of the old a (both inout). REQUIRES: &a != &b.
void LongReverseComplement(std::string& a, std::string& b);

// The three ungapped checks of a read against a contig, each 1 accept, 0 refuse. `offset` is the
// contig position of the read's first base, negative in front of the contig.

/// The read starts inside the contig and runs to or over its right end. REQUIRES: offset > 0.
int MapRead2Lcontig(const std::string& contig, const std::string& read, int64_t offset);

/// The read starts in front of the contig and runs onto it. REQUIRES: offset < 0.
int MapRead2Rcontig(const std::string& contig, const std::string& read, int64_t offset);

/// The read lies anywhere on the contig.
int MapRead2Contig(const std::string& contig, const std::string& read, int64_t offset);

}  // namespace velk
