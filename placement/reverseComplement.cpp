#include "placement/reverseComplement.h"

#include "kmer/wideLetters.h"

namespace velk {
namespace {

// A plain loop: gcc makes vector instructions of it at -O3, where the processor can turn the
// letters of a register round.
[[gnu::always_inline]] inline void turn(char* __restrict target, const char* __restrict source,
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
[[gnu::target("avx2")]] void turnWide(char* target, const char* source, std::size_t length) {
  turn(target, source, length);
}
#else
constexpr auto turnWide = turn;
#endif

}  // namespace

void reverseComplement(char* target, const char* source, std::size_t length) {
  hasWideLetters ? turnWide(target, source, length) : turn(target, source, length);
}

}  // namespace velk
