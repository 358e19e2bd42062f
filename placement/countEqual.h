// The kernel of all alignment checks: how many bases of two stretches are equal.
#pragma once

#include <cstddef>

namespace velk {

/// Returns the number of i in [0, length) with one[i] == other[i], bytes compared as they stand.
std::size_t countEqual(const char* one, const char* other, std::size_t length);

/// The same, one by one.
std::size_t countEqualPlainly(const char* one, const char* other, std::size_t length);

}  // namespace velk
