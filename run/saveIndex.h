// Writes the file of a saved index (run/savedFormat.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kmer/seedIndex.h"
#include "run/savedFormat.h"

namespace velk::run {

namespace saved {

/// `md5`: of 32 digits.
Md5Digits digitsOf(const std::string& md5);

}  // namespace saved

struct ToSave {
  const Assembly& assembly;
  const SeedIndex& index;
  const std::vector<uint64_t>& placeholders;  // lengths given
};

/// Makes `file`, whole or not at all, and returns its bytes. `header`: without parts and sums.
/// Throws Failure, and std::bad_alloc.
uint64_t saveIndex(const std::string& file, saved::Header header, const ToSave& toSave,
                   int threads);

}  // namespace velk::run
