#include "driver/runFiles.h"

#include "contig/contig.h"
#include "driver/gapReport.h"
#include "driver/velk.h"

namespace velk {

std::vector<RunFile> inputsOfRun(const Lib* libs, int libSum) {
  std::vector<RunFile> inputs;
  const auto add = [&](const std::string& name, const char* role) {
    if (!name.empty()) inputs.push_back({name, role});
  };
  add(lib_file, "the library file");
  add(scaffold_file, "the scaffold file");
  add(contig_file, "the contig file");
  const char* const readFile = "a read file";
  for (int i = 0; i < libSum; ++i) {
    const Lib& lib = libs[i];
    for (Len_t j = 0; j < lib.pfilenum; ++j) {
      add(lib.pairs[j].read1file, readFile);
      add(lib.pairs[j].read2file, readFile);
    }
    for (Len_t j = 0; j < lib.s2filenum; ++j) add(lib.single2[j].readfile, readFile);
    for (Len_t j = 0; j < lib.sfilenum; ++j) add(lib.single[j].readfile, readFile);
    for (Len_t j = 0; j < lib.qfilenum; ++j) add(lib.singlequal[j].readfile, readFile);
  }
  return inputs;
}

std::vector<RunFile> outputsOfRun() {
  std::vector<RunFile> outputs;
  if (!out_file.empty()) outputs.push_back({out_file, "the file of reads found"});
  if (!scaffold_file.empty()) {
    outputs.push_back({contigPositionsFileOf(scaffold_file), "the contig positions"});
    outputs.push_back({contigFileOf(scaffold_file), "the contigs"});
  }
  if (!scaffold_file.empty() || !contig_file.empty()) {
    outputs.push_back({gapReportFile(), "the gap report"});
  }
  return outputs;
}

}  // namespace velk
