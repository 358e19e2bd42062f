// A fixture that gives every test the default run parameters and leaves no trace in them; and what
// of a long comparison is made.
#pragma once

#include <gtest/gtest.h>

#include "driver/velk.h"

namespace velk::test {

/// What a test makes of so many rounds, letters and the like: all; with VELK_SHORT
/// (tests/CMakeLists.txt) the fifth part.
template <class Number>
constexpr Number part(Number all) {
#ifdef VELK_SHORT
  return all / 5;
#else
  return all;
#endif
}

/// How often a thing must be met, of `all` times in the whole comparison: so often; in a part of
/// it, where things are met less evenly, the twentieth part.
constexpr int leastOf(int all) {
  return part(5) == 5 ? all : all / 20;
}

/// All run parameters, as one value.
struct RunParameters {
  std::string lib_file = velk::lib_file;
  std::string contig_file = velk::contig_file;
  std::string scaffold_file = velk::scaffold_file;
  std::string out_file = velk::out_file;
  double OverRatio = velk::OverRatio;
  double mapCut = velk::mapCut;
  int CuttEdge = velk::CuttEdge;
  int Kmer = velk::Kmer;
  int thread_num = velk::thread_num;
  int readLen = velk::readLen;
  uint64_t initSize = velk::initSize;
  int CONTIGLEN = velk::CONTIGLEN;
  float LoadFactor = velk::LoadFactor;
  int BIGGAPLEN = velk::BIGGAPLEN;
  int MAXINSERT = velk::MAXINSERT;

  void restore() const {
    velk::lib_file = lib_file;
    velk::contig_file = contig_file;
    velk::scaffold_file = scaffold_file;
    velk::out_file = out_file;
    velk::OverRatio = OverRatio;
    velk::mapCut = mapCut;
    velk::CuttEdge = CuttEdge;
    velk::Kmer = Kmer;
    velk::thread_num = thread_num;
    velk::readLen = readLen;
    velk::initSize = initSize;
    velk::CONTIGLEN = CONTIGLEN;
    velk::LoadFactor = LoadFactor;
    velk::BIGGAPLEN = BIGGAPLEN;
    velk::MAXINSERT = MAXINSERT;
  }
};

/// Base of fixtures whose tests set run parameters.
class RunParametersTest : public ::testing::Test {
 protected:
  ~RunParametersTest() override { saved_.restore(); }

 private:
  RunParameters saved_;
};

}  // namespace velk::test
