#include "placement/reverseComplement.h"

#include "kmer/vectorised.h"

namespace velk {

VELK_VECTORISED void reverseComplement(char* __restrict target, const char* __restrict source,
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

}  // namespace velk
