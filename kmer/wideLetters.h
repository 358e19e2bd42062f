// Whether the processor has AVX2: registers of thirty-two letters. Functions that are compiled for
// these have a second form for the others; both give the same.
#pragma once

namespace velk {

#if defined(__x86_64__)
inline const bool hasWideLetters = __builtin_cpu_supports("avx2");
#else
inline constexpr bool hasWideLetters = false;
#endif

}  // namespace velk
