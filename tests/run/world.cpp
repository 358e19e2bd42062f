#include "tests/run/world.h"

#include "run/assembly.h"

namespace velk::test {

void RunWorld::makeAssembly(const std::vector<MadeScaffold>& scaffolds,
                            const std::vector<uint64_t>& placeholders, int cut) {
  std::string text;
  for (const MadeScaffold& scaffold : scaffolds) {
    text += ">" + scaffold.name + "\n";
    for (const TestContig& contig : scaffold.contigs) {
      text += std::string(static_cast<std::size_t>(contig.gapBefore), 'N') + contig.bases;
    }
    text += "\n";
  }
  run::PlaceholderRule rule;
  rule.lengths = placeholders;
  assembly_ = std::make_unique<run::Assembly>(folder_.write("assembly.fa", text),
                                              run::CutOptions{30, cut, 50}, rule);
}

run::Library RunWorld::pairs(const std::string& name, double insert, double spread) {
  run::Library library;
  library.name = name;
  library.insert = insert;
  library.spread = spread;
  return library;
}

run::Library RunWorld::singles(const std::string& name) {
  run::Library library;
  library.name = name;
  library.kind = run::LibraryKind::kSingle;
  return library;
}

std::string_view RunWorld::keep(const std::string& text) {
  return *texts_.emplace_back(std::make_unique<std::string>(text));
}

reads::RecordView RunWorld::read(const std::string& name, const std::string& bases) {
  std::string quality(bases.size(), '!');
  for (std::size_t i = 0; i < quality.size(); ++i) quality[i] = static_cast<char>('#' + i % 40);
  return {keep(name), keep(bases), keep(quality)};
}

std::string cigarText(const std::vector<uint32_t>& cigar) {
  std::string text;
  for (const uint32_t operation : cigar) {
    text += std::to_string(operation >> 4) + "MIDNSHP=X"[operation & 15];
  }
  return text;
}

}  // namespace velk::test
