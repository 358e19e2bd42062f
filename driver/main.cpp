// The run: one pass of the main thread through the stages, in a fixed order.
#include <array>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "contig/contig.h"
#include "driver/fatal.h"
#include "driver/gapReport.h"
#include "driver/listener.h"
#include "driver/outputFile.h"
#include "driver/runFiles.h"
#include "driver/textInput.h"
#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "libinfo/libinfo.h"
#include "streaming/gzipInput.h"
#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "streaming/workerPool.h"

namespace velk {
namespace {

// Keeps every input named on the command line and in the libraries from being overwritten.
void protectInputs(const Lib* libs, int libSum) {
  for (const RunFile& input : inputsOfRun(libs, libSum)) protectFile(input.name);
}

// Opens the output, which may not be the gap report either: that would be found only at the end
// of the run.
void openFoundReads() {
  const bool hasReport = !scaffold_file.empty() || !contig_file.empty();
  if (hasReport) protectFile(gapReportFile());
  if (!openOutput(fout, out_file)) fatal(kUserError, "Fail creat file: " + out_file + "\n");  // sic
  if (hasReport) unprotectFile(gapReportFile());
}

// Loads the assembly from -s or, without it, from -c. Returns the number of gaps.
uint64_t loadSequences() {
  uint64_t gapSum = 0;
  if (!scaffold_file.empty()) {
    unprotectFile(contig_file);  // not read, so a side file may replace it
    refusePipe(scaffold_file);
    InitialScaffold(scaffoldInfo, scaffold_file, scaffoldSum);
    LoadScaffolds(scaffoldInfo, scaffold_file, scaffoldSum, gapSum);
  } else if (!contig_file.empty()) {
    say("Only set -c, load contig directly!\n");
    refusePipe(contig_file);
    ScaftigMap scaftigNum;
    CountscaftigNum(contig_file, scaftigNum);
    InitialScaffold(scaffoldInfo, scaftigNum, gapSum);
    contigtoScafInfo(contig_file, scaffoldInfo, scaftigNum);
    scaffoldSum = static_cast<uint32_t>(scaftigNum.size());
  } else {
    fatal(kUserError, "Please input scaffold sequence or contig sequence!\n");
  }
  return gapSum;
}

// Streams all libraries through the workers.
void findReads(Lib*& libs, int libSum) {
  startWorkers(thread_num);
  say(std::to_string(thread_num) + " threads created!\n");
  libread2gap(libs, libSum);
  sendSignal(2);
  releaseRows(thread_num);
  say("All the libs treated finish!\n");
}

void releaseIndex() {
  say("kmerHash->count: " + std::to_string(kmerHash->count) + "\n" +
      "kmerHash->size: " + std::to_string(kmerHash->size) + "\n");
  freeKmerHash(kmerHash);
  kmerHash = nullptr;
}

void sayParameters() {
  std::array<char, 128> text{};  // of its own, as there may be no memory for a string
  std::snprintf(text.data(), text.size(), "initSize=%" PRIu64 "\nOverRatio=%g\nContigLen=%d\n",
                initSize, OverRatio, CONTIGLEN);
  say(text.data());
}

int run(int argc, char** argv) {
  if (argc <= 1) usage();
  const int noptions = mGetOptions(argc, argv);
  if (lib_file.empty()) fatal(kUserError, "Please check input lib file!\n");
  sayParameters();
  kmerHash = newKmerHash(initSize, LoadFactor);
  if (noptions != argc) fatal(kInputError, "Please check input!\n");
  checkParameters();

  Lib* libs = nullptr;
  int libSum = 0;
  Loadlib(lib_file, libs, libSum);
  protectInputs(libs, libSum);
  openFoundReads();

  const uint64_t gapSum = loadSequences();
  FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum);
  say("Fetch kmers finished!\n");
  say("Initialize finished!\n");

  makeReadSums(gapSum);
  findReads(libs, libSum);
  writeGapReport();
  say("Output gaps information done!\n");

  Libsclear(libs, libSum);
  say("lib clear done!\n");
  releaseIndex();
  releaseScaffolds();
  delete[] readSumInEachGap;
  readSumInEachGap = nullptr;
  say("Free resource done!\n");
  finishOutput(fout, out_file);
  return gzipDamageSeen() ? kUserError : kSuccess;
}

}  // namespace
}  // namespace velk

int main(int argc, char** argv) {
  velk::openStandardDescriptors();
  // A write that these would kill the run for fails with a message instead.
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  try {
    return velk::run(argc, argv);
  } catch (const std::bad_alloc&) {
    velk::fatal(velk::kMemoryError, "[ERROR]: out of memory\n");
  } catch (const std::exception& error) {
    velk::fatal(velk::kUserError, std::string("[ERROR]: ").append(error.what()).append("\n"));
  }
}
