// What the kernels are measured on: an indexed assembly, reads of it and files of reads.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "contig/contig.h"

namespace velk::bench {

inline constexpr uint64_t kGenome = 10'000'000;  // bases
inline constexpr std::size_t kRead = 150;        // bases

/// Makes the run's assembly, index and result rows, and the read files, unless they are there.
void makeWorld();

/// A read file of 20000 records: "reads.fq", "reads.fq.gz", or "reads.fq.bgz", which bgzip makes.
/// Makes the world.
std::string readFile(const std::string& name);

/// A contig between two others.
const ContigInfo& contigOf(std::mt19937_64& random);

std::string randomBases(std::mt19937_64& random, std::size_t length);

// Reads, more than the caches keep the index of; each makes the world.

/// Reads from within contigs.
std::vector<std::string> interiorReads();

/// Reads whose last 50 bases hang over a contig's end.
std::vector<std::string> edgeReads();

/// Random reads.
std::vector<std::string> foreignReads();

/// Keys of every eighth of their k-mers, shuffled.
std::vector<uint64_t> keysOf(const std::vector<std::string>& reads);

}  // namespace velk::bench
