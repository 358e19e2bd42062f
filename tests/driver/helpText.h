// The help as a pattern, for tests that end in it.
#pragma once

#include <string>

namespace velk::test {

/// The values that the help shows, as it prints them.
struct HelpValues {
  std::string overRatio = "0.3";
  std::string mapCut = "0.98";
  std::string cutEdge = "0";
  std::string kmer = "31";
  std::string threads = "1";
  std::string readLength = "100";
  std::string initSize = "1048576";
  std::string contigLength = "70";
  std::string loadFactor = "0.75";
};

/// An extended regular expression that the help, with these values, matches as a whole. Only the
/// build's date and time are left open.
std::string helpPattern(const HelpValues& values = {});

/// Makes standard output of this process end where standard error does. For death tests, which
/// see standard error alone.
void sendOutputToError();

}  // namespace velk::test
