#include "placement/engine.h"

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/fetchKmers.h"

namespace velk {

Engine engineOfRun() {
#ifdef VELK_PLAIN_ENGINE
  return {PlainIndex(*kmerHash, scaffoldInfo, scaffoldSum, Kmer), Kmer};
#else
  return {*seedIndex, Kmer};
#endif
}

}  // namespace velk
