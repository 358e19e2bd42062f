// Reads on the other strand, as alignment records have them.
#pragma once

#include <string>
#include <string_view>

namespace velk::run {

/// The reverse complement: codes of several bases too; other letters stay what they are.
std::string reverseComplementOf(std::string_view bases);

/// The qualities of the reverse complement.
std::string reversedQuality(std::string_view quality);

}  // namespace velk::run
