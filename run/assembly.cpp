#include "run/assembly.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "driver/velk.h"
#include "run/failure.h"

namespace velk::run {

Assembly::Assembly(const std::string& file, const CutOptions& options,
                   const PlaceholderRule& placeholders)
    : file_(file) {
  setParameters(options);
  readFasta(file, notes_, [&](const std::string& name, const std::string& bases) {
    add(name, bases, placeholders);
  });
}

// Sets the run parameters by which the engine cuts scaffolds and indexes contigs.
void Assembly::setParameters(const CutOptions& options) const {
  CONTIGLEN = options.shortestContig;
  CuttEdge = options.cut;
  readLen = options.readLength;
  scaffold_file = file_;  // for messages
}

Assembly::Model::~Model() {
  for (const ScaffoldInfo& info : scaffolds) delete[] info.contigsInfo;
}

void Assembly::add(const std::string& name, const std::string& bases,
                   const PlaceholderRule& placeholders) {
  std::stringstream positions;
  const std::string id = std::to_string(model_.scaffolds.size() + 1);
  ScaffoldInfo& info = model_.scaffolds.emplace_back();
  uint32_t first = 0;
  splitScaffold(&info, bases, id, first, gapSum_, positions);
  Scaffold& scaffold = scaffolds_.emplace_back(Scaffold{name, bases.size(), {}, {}, gaps_.size()});
  std::string unused;
  uint64_t number = 0;
  ContigPlace place{};
  while (positions >> unused >> number >> place.start >> place.end) {
    if (number < info.contigsSum) {
      scaffold.contigs.push_back(place);
    } else {
      scaffold.lastBase = place;
    }
  }
  addGaps(bases, placeholders);
}

// Notes the gaps of the last scaffold.
void Assembly::addGaps(const std::string& bases, const PlaceholderRule& placeholders) {
  const Scaffold& scaffold = scaffolds_.back();
  const auto number = static_cast<uint32_t>(scaffolds_.size() - 1);
  for (uint32_t c = 1; c < scaffold.contigs.size(); ++c) {
    Gap gap{number,
            c,
            scaffold.contigs[c - 1].end,
            scaffold.contigs[c].start,
            0,
            model_.scaffolds.back().contigsInfo[c].frontGapSize};
    for (std::size_t at = bases.find('N', gap.start); at < gap.end; at = bases.find('N', at)) {
      const std::size_t end = std::min(bases.find_first_not_of('N', at), gap.end);
      gap.unknown += end - at;
      if (placeholders.holds(scaffold.name, at, end - at)) {
        gap.isPlaceholder = true;
        gap.placeholders.push_back(end - at);
      }
      at = end;
    }
    gaps_.push_back(gap);
  }
}

void Assembly::lengthenPlaceholders(uint64_t bases) {
  for (Gap& gap : gaps_) {
    for (const uint64_t written : gap.placeholders)
      gap.lengthened += std::max(bases, written) - written;
    gap.length += gap.lengthened;
    model_.scaffolds[gap.scaffold].contigsInfo[gap.contigBehind].frontGapSize = gap.length;
  }
}

bool PlaceholderRule::holds(const std::string& scaffold, uint64_t start, uint64_t length) const {
  if (std::find(lengths.begin(), lengths.end(), length) != lengths.end()) return true;
  const auto found = positions.find(scaffold);
  return found != positions.end() &&
         std::find(found->second.begin(), found->second.end(), start) != found->second.end();
}

PlaceholderRule readPlaceholders(const std::vector<uint64_t>& lengths, const std::string& agp) {
  PlaceholderRule rule{lengths, {}};
  if (agp.empty()) return rule;
  std::ifstream stream(agp);
  if (!stream) throw Failure(Status::kFailed, agp + ": can't be opened");
  std::size_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    if (line.empty() || line.starts_with('#')) continue;
    std::istringstream columns(line);
    std::string object;
    uint64_t from = 0;
    uint64_t to = 0;
    uint64_t part = 0;
    std::string type;
    if (!(columns >> object >> from >> to >> part >> type) || from == 0 || to < from) {
      throw Failure(Status::kUsage,
                    agp + ", line " + std::to_string(number) + ": not a line of an AGP file");
    }
    if (type == "U") rule.positions[object].push_back(from - 1);
  }
  if (stream.bad()) throw Failure(Status::kFailed, agp + ": can't be read");
  return rule;
}

}  // namespace velk::run
