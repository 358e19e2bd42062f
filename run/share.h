// A share: what one task of a plan has found, in a folder of its own, until all shares are
// gathered. Its files hold sorted items (run/spillSorter.h) in the memory layout of the program
// that wrote them; share.json says whose they are, and is there in whole shares only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/checksum.h"
#include "run/outputs.h"
#include "run/resultFolder.h"
#include "run/search.h"
#include "run/summary.h"

namespace velk::run {

struct Share {
  std::string program;               // checksum of the program that made it
  std::string plan;                  // checksum of the plan
  uint32_t task = 0;                 // number in the plan, from 0
  uint32_t library = 0;              // the task's; not part of the file
  std::vector<FileIdentity> inputs;  // the read files
  uint64_t records = 0;              // reads or pairs of the input
  reads::Fixes fixes;
  ReadCounts counts;
  uint64_t found = 0;  // distinct reads
  ShareItems items;
  std::vector<PhaseTime> times;
  std::string machine;        // its name
  uint64_t peakMemory = 0;    // bytes
  uint64_t spilledBytes = 0;  // that were sorted on disk
  std::vector<ResultFile> files;
};

/// The text of share.json, with a checksum of itself.
std::string shareText(const Share& share);

/// The share in a folder. Throws Failure, which names the folder, where there is no whole share, or
/// a file of it is not as it was written.
Share readShare(const std::string& folder);

/// Throws Failure where the folder holds a share of another plan than that of this checksum.
void requireNoOther(const std::string& folder, const std::string& plan);

/// The checksum of this program.
std::string ownChecksum();

}  // namespace velk::run
