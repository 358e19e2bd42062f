#include "driver/gapReport.h"

#include "contig/contig.h"
#include "driver/fatal.h"
#include "driver/outputFile.h"
#include "driver/velk.h"
#include "streaming/readBuffer.h"

namespace velk {

std::string gapReportFile() {
  // KEPT: with contig input the stem is empty and the report is ".gapsinfo" (cli contig_input)
  return scaffold_file + ".gapsinfo";
}

void makeReadSums(uint64_t gapSum) {
  readSumInEachGap = allocateArray<int>(gapSum, {294, "main", kMemoryError});
}

void writeGapReport() {
  const std::string gapInfoOutput = gapReportFile();
  LocalOutput gapInfoOutFile;
  if (!openOutput(gapInfoOutFile, gapInfoOutput)) {
    fatal(kUserError, "Can't open output file: " + gapInfoOutput + "\n");
  }
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    const ScaffoldInfo& info = scaffoldInfo[i];
    // KEPT: a scaffold without contigs reports 4294967295 gaps (GapReport.ScaffoldWithoutContigs)
    gapInfoOutFile << '>' << info.scaffoldId << '\t' << info.contigsSum << '\t'
                   << info.contigsSum - 1 << '\n';
    for (uint32_t j = 1; j < info.contigsSum; ++j) {
      const ContigInfo& contig = info.contigsInfo[j];
      gapInfoOutFile << contig.frontGapNum << '\t' << contig.frontGapSize << '\t'
                     << readSumInEachGap[contig.frontGapNum] << '\t'
                     << info.contigsInfo[j - 1].contigSeq.size() << '\t' << contig.contigSeq.size()
                     << '\n';
    }
  }
  finishOutput(gapInfoOutFile, gapInfoOutput);
}

}  // namespace velk
