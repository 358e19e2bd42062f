// A small assembly, libraries and found entries for the tests of what is written.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/found.h"
#include "run/library.h"
#include "tests/support/assembly.h"
#include "tests/support/files.h"
#include "tests/support/runParameters.h"

namespace velk::test {

/// A scaffold: contigs, and between them gaps of so many N.
struct MadeScaffold {
  std::string name;
  std::vector<TestContig> contigs;
};

/// Fixture with an assembly that is made of what a test says, and with the texts of its entries.
class RunWorld : public RunParametersTest {
 protected:
  /// Makes the assembly. Runs of exactly `placeholders` N stand for gaps of unknown length.
  void makeAssembly(const std::vector<MadeScaffold>& scaffolds,
                    const std::vector<uint64_t>& placeholders = {}, int cut = 0);

  const run::Assembly& assembly() const { return *assembly_; }
  run::Assembly& assembly() { return *assembly_; }

  /// A library of pairs, inward, of these inserts.
  static run::Library pairs(const std::string& name, double insert, double spread);

  /// A library of single reads.
  static run::Library singles(const std::string& name);

  /// A text that stays valid to the end of the test.
  std::string_view keep(const std::string& text);

  /// A read as it was sequenced, with qualities.
  reads::RecordView read(const std::string& name, const std::string& bases);

  TemporaryFolder folder_;

 private:
  std::unique_ptr<run::Assembly> assembly_;
  std::vector<std::unique_ptr<std::string>> texts_;
};

/// A CIGAR as text.
std::string cigarText(const std::vector<uint32_t>& cigar);

}  // namespace velk::test
