#include "placement/reverseComplement.h"

#include "kmer/wideLetters.h"

namespace velk {
namespace {

// A plain loop: gcc makes vector instructions of it at -O3, where the processor can reverse
// the letters of a register.
[[gnu::always_inline]] inline void complementPlainly(char* __restrict target,
                                                     const char* __restrict source,
                                                     std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    const char upper = static_cast<char>(source[length - 1 - i] & 0xDF);
    char complement = 'A';
    complement = upper == 'A' ? 'T' : complement;
    complement = upper == 'C' ? 'G' : complement;
    complement = upper == 'G' ? 'C' : complement;
    target[i] = complement;
  }
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] void complementWide(char* target, const char* source, std::size_t length) {
  complementPlainly(target, source, length);
}
#else
constexpr auto complementWide = complementPlainly;
#endif

}  // namespace

void reverseComplement(char* target, const char* source, std::size_t length) {
  hasWideLetters ? complementWide(target, source, length)
                 : complementPlainly(target, source, length);
}

}  // namespace velk
