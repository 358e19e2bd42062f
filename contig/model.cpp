// The life of the model of scaffolds: made for as many as the input has, and released.
#include <string>
#include <string_view>

#include "contig/contig.h"
#include "contig/header.h"
#include "driver/fatal.h"
#include "driver/listener.h"
#include "driver/textInput.h"

namespace velk {
namespace {

constexpr std::string_view kSeparator = "\tFunction: ";
constexpr std::string_view kFunction = "InitialScaffold";

}  // namespace

ScaffoldInfo* scaffoldInfo = nullptr;
uint32_t scaffoldSum = 0;

uint32_t contignum(const std::string& file) {
  TextInput input(file);
  if (!input.isOpen()) {
    // KEPT: this message goes to standard output (Contignum.UnopenableFileIsToldOnStandardOutput)
    endOnOutput(kInputError, "Fail to load file " + file + "\n");
  }
  uint32_t headers = 0;
  bool isTold = false;
  for (std::string line; input.readLine(line);) {
    if (line.starts_with('>')) ++headers;
    if (headers == 0 && !isTold) isTold = warnOfOtherKind(file, line, input.lineNumber() == 1);
  }
  return headers;
}

void InitialScaffold(ScaffoldInfo*& scaffoldInfo, const std::string& scaffoldFile,
                     uint32_t& scaffoldSum) {
  scaffoldSum = contignum(scaffoldFile);
  scaffoldInfo =
      allocateArray<ScaffoldInfo>(scaffoldSum, {__LINE__, kFunction, kUserError, kSeparator});
  say("Scaffold Initialization finished!\n");
}

void InitialScaffold(ScaffoldInfo*& scaffoldInfo, ScaftigMap& scaftigNum, uint64_t& gapSum) {
  scaffoldInfo =
      allocateArray<ScaffoldInfo>(scaftigNum.size(), {__LINE__, kFunction, kUserError, kSeparator});
  int index = 0;
  for (auto& [id, number] : scaftigNum) {
    ScaffoldInfo& info = scaffoldInfo[index];
    info.scaffoldId = id;
    info.contigsSum = static_cast<uint32_t>(number);
    info.contigsInfo =
        allocateArray<ContigInfo>(info.contigsSum, {__LINE__, kFunction, kUserError, kSeparator});
    gapSum += info.contigsSum - 1;
    number = index++;
  }
  say("Scaffold Initialization finished!\n");
}

void releaseScaffolds() {
  for (uint32_t i = 0; i < scaffoldSum; ++i) delete[] scaffoldInfo[i].contigsInfo;
  delete[] scaffoldInfo;
  scaffoldInfo = nullptr;
  scaffoldSum = 0;
}

}  // namespace velk
