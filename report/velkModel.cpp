#include "report/velkModel.h"

#include "contig/header.h"
#include "report/lineReader.h"

namespace velk::report {
namespace {

// Takes the last field of a line off it.
std::string_view takeLast(std::string_view& line, const LineReader& reader) {
  const std::size_t tab = line.rfind('\t');
  if (tab == std::string_view::npos) reader.fail();
  const std::string_view field = line.substr(tab + 1);
  line = line.substr(0, tab);
  return field;
}

}  // namespace

class VelkModel::Reading {
 public:
  explicit Reading(VelkModel& model) : scaffolds_(model.scaffolds_), gaps_(model.gaps_) {}

  // The scaffolds with their gaps, and how long their contigs must be.
  void readGaps(const std::string& file) {
    LineReader reader(file);
    std::string_view line;
    while (reader.next(line)) {
      line.starts_with('>') ? addScaffold(line, reader) : addGap(line, reader);
    }
    for (const VelkScaffold& scaffold : scaffolds_) requireGaps(scaffold, reader);
  }

  // Where the contigs lie. A single base behind the last gap has a line, too, but is no contig.
  void readPositions(const std::string& file) {
    LineReader reader(file);
    std::string_view line;
    std::size_t scaffold = 0;
    uint64_t next = 0;  // contig of that scaffold
    while (reader.next(line)) {
      const auto end = reader.number<uint64_t>(takeLast(line, reader));
      const auto start = reader.number<uint64_t>(takeLast(line, reader));
      const auto contig = reader.number<uint64_t>(takeLast(line, reader));
      if (contig == 0) {
        if (next != 0) ++scaffold;
        while (scaffold < scaffolds_.size() && scaffolds_[scaffold].contigs.empty()) ++scaffold;
        next = 0;
      }
      if (scaffold == scaffolds_.size() || contig != next || line != scaffolds_[scaffold].id) {
        reader.fail();
      }
      if (next++ < scaffolds_[scaffold].contigs.size()) {
        place(scaffolds_[scaffold], contig, {start, end}, reader);
      }
    }
    for (const VelkScaffold& each : scaffolds_) {
      if (each.places.contigs.size() != each.contigs.size()) reader.fail();
    }
  }

  void readBases(const std::string& file) {
    LineReader reader(file);
    std::string_view line;
    for (VelkScaffold& scaffold : scaffolds_) {
      for (std::size_t c = 0; c < scaffold.contigs.size(); ++c) {
        const std::string header =
            std::string(kScaffoldWord) + scaffold.id + '_' + std::to_string(c) + '\t';
        if (!reader.next(line) || !line.starts_with(header)) reader.fail();
        const run::Stretch stretch = run::stretchOf(scaffold.places.contigs[c]);
        if (!reader.next(line) || static_cast<int64_t>(line.size()) != stretch.length()) {
          reader.fail();
        }
        scaffold.contigs[c].contigSeq = line;
      }
    }
    if (reader.next(line)) reader.fail();
  }

 private:
  void addScaffold(std::string_view line, const LineReader& reader) {
    takeLast(line, reader);  // the number of gaps, which follow
    const auto contigs = reader.number<uint32_t>(takeLast(line, reader));
    VelkScaffold scaffold;
    scaffold.id = line.substr(1);
    scaffold.contigs.resize(contigs);
    scaffold.places.firstGap = gaps_.size();
    scaffolds_.push_back(std::move(scaffold));
  }

  void addGap(std::string_view line, const LineReader& reader) {
    if (scaffolds_.empty()) reader.fail();
    takeLast(line, reader);  // the lengths of the contigs, which .contigPos has, too
    takeLast(line, reader);
    VelkGap gap{};
    gap.reads = reader.number<uint64_t>(takeLast(line, reader));
    gap.place.length = reader.number<uint64_t>(takeLast(line, reader));
    gap.number = reader.number<uint64_t>(line);
    if (!gaps_.empty() && gap.number <= gaps_.back().number) reader.fail();
    gap.place.scaffold = static_cast<uint32_t>(scaffolds_.size() - 1);
    gap.place.contigBehind =
        static_cast<uint32_t>(gaps_.size() - scaffolds_.back().places.firstGap + 1);
    if (gap.place.contigBehind >= scaffolds_.back().contigs.size()) reader.fail();
    gaps_.push_back(gap);
  }

  void requireGaps(const VelkScaffold& scaffold, const LineReader& reader) const {
    const auto next = static_cast<std::size_t>(&scaffold - scaffolds_.data()) + 1;
    const std::size_t end =
        next == scaffolds_.size() ? gaps_.size() : scaffolds_[next].places.firstGap;
    const std::size_t contigs = std::max<std::size_t>(1, scaffold.contigs.size());
    if (end - scaffold.places.firstGap != contigs - 1) reader.fail();
  }

  // A contig begins at the end of the gap in front of it.
  void place(VelkScaffold& scaffold, uint64_t contig, const run::ContigPlace& written,
             const LineReader& reader) {
    if (written.end < written.start) reader.fail();
    uint64_t start = written.start;
    if (contig > 0) {
      VelkGap& gap = gaps_[scaffold.places.firstGap + contig - 1];
      gap.place.start = scaffold.places.contigs.back().end;
      gap.place.end = start = gap.place.start + gap.place.length;
      gap.shift = lastEnd_ - static_cast<int64_t>(gap.place.start);
    }
    lastEnd_ = static_cast<int64_t>(written.end);
    scaffold.places.contigs.push_back({start, start + (written.end - written.start)});
    scaffold.places.length = scaffold.places.contigs.back().end;
  }

  std::vector<VelkScaffold>& scaffolds_;
  std::vector<VelkGap>& gaps_;
  int64_t lastEnd_ = 0;  // of the contig that was placed last, as .contigPos has it
};

VelkModel::VelkModel(const std::string& scaffolds) {
  Reading reading(*this);
  reading.readGaps(scaffolds + ".gapsinfo");
  reading.readPositions(scaffolds + ".contigPos");
  reading.readBases(scaffolds + ".contig");
}

}  // namespace velk::report
