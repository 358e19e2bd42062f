// Reads turned round, as alignment records have them.
#pragma once

#include <string>
#include <string_view>

namespace velk::run {

/// The reverse complement: codes of several bases too; other letters stay what they are.
std::string turnedBases(std::string_view bases);

/// The qualities of turned bases.
std::string turnedQuality(std::string_view quality);

}  // namespace velk::run
