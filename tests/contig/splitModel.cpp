#include "tests/contig/splitModel.h"

namespace velk::test {
namespace {

struct Stretch {
  std::size_t begin;
  std::size_t end;
};

bool isGap(char letter) {
  return letter == 'N' || letter == 'n';
}

// The stretches between gaps that stand for a contig, letter by letter: the first one, the long
// ones, and the one that touches the end.
std::vector<Stretch> keptStretches(const std::string& sequence, int contigLen) {
  std::vector<Stretch> kept;
  for (std::size_t begin = 0; begin < sequence.size();) {
    std::size_t end = begin;
    while (end < sequence.size() && !isGap(sequence[end])) ++end;
    const auto length = static_cast<long>(end - begin);
    if (length > 0 && (kept.empty() || length >= contigLen || end == sequence.size())) {
      kept.push_back({begin, end});
    }
    begin = end + 1;
  }
  return kept;
}

}  // namespace

// The closed form of the walk: a gap reaches from one kept stretch to the next, whatever lies
// between them, and the gaps of a scaffold are numbered one after the other.
SplitModel modelOfSplit(const std::string& sequence, const std::string& id, SplitRules rules,
                        uint64_t gaps) {
  SplitModel model{{}, "", gaps};
  const std::vector<Stretch> kept = keptStretches(sequence, rules.contigLen);
  for (std::size_t k = 0; k < kept.size(); ++k) {
    auto [begin, end] = kept[k];
    PlainContig contig;
    if (k > 0) contig = {"", gaps + k - 1, begin - kept[k - 1].end};
    const bool hasSlot = k == 0 || end - begin != 1 || end != sequence.size();
    if (rules.cuttEdge != 0 &&
        2L * (rules.readLen + rules.cuttEdge) <= static_cast<long>(end - begin)) {
      begin += static_cast<std::size_t>(rules.cuttEdge);
      end -= static_cast<std::size_t>(rules.cuttEdge);
      contig.gapSize += static_cast<std::size_t>(rules.cuttEdge);
    }
    contig.bases = sequence.substr(begin, end - begin);
    for (const std::string& field :
         {id + "\t", std::to_string(k) + "\t", std::to_string(begin) + "\t"}) {
      model.positions += field;
    }
    model.positions += std::to_string(end) + "\n";
    if (hasSlot) model.contigs.push_back(contig);
  }
  if (!kept.empty()) model.gaps += kept.size() - 1;
  return model;
}

}  // namespace velk::test
