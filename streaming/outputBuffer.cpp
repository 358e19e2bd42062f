#include "contig/contig.h"
#include "driver/outputFile.h"
#include "driver/velk.h"
#include "streaming/readBuffer.h"

namespace velk {

void OutputBuffer() {
  for (int t = 0; t < threadNum; ++t) {
    foundNumInLib += foundReadNum[t];
    for (uint64_t k = 0; k < foundReadNum[t]; ++k) {
      ++readSumInEachGap[gapNum[t][k]];
      fout << '>' << gapNum[t][k] << '\t' << gapsSize[t][k] << '\t' << positionInGap[t][k] << '\t'
           << scaffoldInfo[scaffold[t][k]].scaffoldId << '\t' << frontContig[t][k] << '\t'
           << insertLength << '\n'
           << foundReads[t][k] << '\n';
    }
  }
  requireWritten(fout, out_file);
}

}  // namespace velk
