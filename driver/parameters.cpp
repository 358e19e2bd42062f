// The run parameters with their defaults, and the check that their values make a run possible.
#include <cstdlib>

#include "driver/fatal.h"
#include "driver/options.h"
#include "driver/velk.h"

namespace velk {

std::string lib_file;
std::string contig_file;
std::string scaffold_file;
std::string out_file;
double OverRatio = 0.3;
double mapCut = 0.98;
int CuttEdge = 0;
int Kmer = 31;
int thread_num = 1;
int readLen = 100;
uint64_t initSize = 1048576;
int CONTIGLEN = 70;
float LoadFactor = 0.75F;
int BIGGAPLEN = 900;
int MAXINSERT = 0;

int lenientInt(const std::string& text) {
  return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

std::vector<std::string> impossibleValues() {
  std::vector<std::string> wrong;
  if (thread_num < 1) wrong.emplace_back("-t must be at least 1");
  if (Kmer < 0) wrong.emplace_back("-k must be at least 0");
  if (CuttEdge < 0) wrong.emplace_back("-C must be at least 0");
  if (readLen < 0) wrong.emplace_back("-r must be at least 0");
  return wrong;
}

void checkParameters() {
  const std::vector<std::string> wrong = impossibleValues();
  if (!wrong.empty()) fatal(kUserError, "[ERROR]: " + wrong.front() + "\n");
}

}  // namespace velk
