// Alignment records as BAM stores them, in bytes that can be kept, sorted and written later
// (doc/places.md describes their tags).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "run/describe.h"

struct bam1_t;

namespace velk::run {

/// The record with its tags; `readGroup` is its library's. Any thread may call it. Throws Failure
/// for what BAM cannot hold: a name of more than 254 letters.
std::string encodeBam(const OutRecord& record, const std::string& readGroup);

/// Whose record it is, read from encodeBam()'s bytes, which the name is part of.
struct BamName {
  uint32_t library;
  std::string_view name;
};
BamName bamNameOf(std::string_view bytes);

/// Fills `record` (out) from encodeBam()'s bytes, with `namePrefix` in front of its name. Throws
/// Failure where the name becomes too long.
void decodeBam(std::string_view bytes, std::string_view namePrefix, bam1_t* record);

}  // namespace velk::run
