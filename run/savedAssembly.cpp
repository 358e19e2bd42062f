// The assembly of a saved index: its records become the assembly's tables, each checked; its bases
// stay where they are.
#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "run/assembly.h"
#include "run/savedIndex.h"

namespace velk::run {
namespace {

using saved::Part;
using saved::SavedContig;
using saved::SavedScaffold;

class Records {
 public:
  explicit Records(const SavedIndex& index)
      : index_(index),
        names_(index.part<const char>(Part::kNames)),
        scaffolds_(index.part<const SavedScaffold>(Part::kScaffolds)),
        contigs_(index.part<const SavedContig>(Part::kContigs)),
        placeholders_(index.part<const uint64_t>(Part::kGapPlaceholders)),
        bases_(index.part<const char>(Part::kBases)) {
    if (scaffolds_.size() > UINT32_MAX || contigs_.size() > UINT32_MAX) fail("scaffolds");
  }

  std::size_t scaffolds() const { return scaffolds_.size(); }
  std::size_t contigs() const { return contigs_.size(); }

  // Throws Failure unless all records have been taken.
  void finish() const {
    if (!names_.empty()) fail("names");
    if (!contigs_.empty()) fail("contigs");
    if (!placeholders_.empty()) fail("placeholders of gaps");
    if (!bases_.empty()) fail("bases");
  }

  std::string_view nextName() {
    const auto end = std::find(names_.begin(), names_.end(), '\0');
    const std::string_view name(names_.data(), static_cast<std::size_t>(end - names_.begin()));
    if (end == names_.end() || name.empty() || forbiddenIn(name) != '\0' ||
        !known_.insert(name).second) {
      fail("names");
    }
    names_ = names_.subspan(name.size() + 1);
    return name;
  }

  const SavedScaffold& nextScaffold() {
    constexpr uint64_t kLongest = 0x7FFFFFFF;  // bases
    scaffold_ = &scaffolds_[next_++];
    lastEnd_ = 0;
    if (scaffold_->length == 0 || scaffold_->length > kLongest ||
        scaffold_->contigs > contigs_.size()) {
      fail("scaffolds");
    }
    return *scaffold_;
  }

  // The next contig of the scaffold.
  const SavedContig& nextContig(bool isFirst) {
    const SavedContig& contig = contigs_.front();
    const bool isInside =
        lastEnd_ <= contig.start && contig.start < contig.end && contig.end <= scaffold_->length;
    if (!isInside || !isGap(contig, isFirst ? 0 : contig.start - lastEnd_)) fail("contigs");
    lastEnd_ = contig.end;
    contigs_ = contigs_.subspan(1);
    return contig;
  }

  std::vector<uint64_t> nextPlaceholders(const SavedContig& contig) {
    if (contig.placeholders > placeholders_.size()) fail("placeholders of gaps");
    const auto lengths = placeholders_.first(contig.placeholders);
    placeholders_ = placeholders_.subspan(lengths.size());
    uint64_t left = contig.unknown;
    for (const uint64_t length : lengths) {
      if (length == 0 || length > left) fail("placeholders of gaps");
      left -= length;
    }
    return {lengths.begin(), lengths.end()};
  }

  std::string_view nextBases(const SavedContig& contig) {
    const uint64_t length = contig.end - contig.start;
    if (length > bases_.size()) fail("bases");
    const std::string_view bases(bases_.data(), length);
    bases_ = bases_.subspan(length);
    return bases;
  }

  std::optional<ContigPlace> lastBase() const {
    const uint64_t start = scaffold_->lastBase;
    if (start == SavedScaffold::kNone) return std::nullopt;
    if (start < lastEnd_ || start >= scaffold_->length) fail("scaffolds");
    return ContigPlace{start, start + 1};
  }

 private:
  // Whether what is said of the gap in front, of so many bases, can be so: the model does not count
  // the bases that were cut from the contig before it, and counts those of a first contig.
  bool isGap(const SavedContig& contig, uint64_t bases) const {
    const auto cut = static_cast<uint64_t>(index_.header().cut);
    const uint64_t counted = contig.frontGapSize;
    const uint64_t difference = counted > bases ? counted - bases : bases - counted;
    return difference <= cut && contig.unknown <= bases && contig.placeholders <= bases;
  }

  [[noreturn]] void fail(const char* part) const {
    index_.failDamaged(std::string("its ") + part + " can't be so");
  }

  const SavedIndex& index_;
  std::span<const char> names_;  // these are what is left to take
  std::span<const SavedScaffold> scaffolds_;
  std::span<const SavedContig> contigs_;
  std::span<const uint64_t> placeholders_;
  std::span<const char> bases_;
  std::unordered_set<std::string_view> known_;  // names
  std::size_t next_ = 0;                        // scaffold
  const SavedScaffold* scaffold_ = nullptr;
  uint64_t lastEnd_ = 0;  // of the contigs of the scaffold
};

}  // namespace

Assembly::Assembly(const std::string& file, const CutOptions& options,
                   std::shared_ptr<const SavedIndex> saved)
    : file_(file), notes_(saved->header().notes), saved_(std::move(saved)) {
  setParameters(options);
  Records records(*saved_);
  scaffolds_.reserve(records.scaffolds());
  model_.scaffolds.reserve(records.scaffolds());
  gaps_.reserve(records.contigs());
  for (uint32_t s = 0; s < records.scaffolds(); ++s) {
    const SavedScaffold& record = records.nextScaffold();
    const auto count = static_cast<uint32_t>(record.contigs);
    Scaffold& scaffold = scaffolds_.emplace_back(
        Scaffold{std::string(records.nextName()), record.length, {}, {}, gaps_.size()});
    ScaffoldInfo& info = model_.scaffolds.emplace_back(
        ScaffoldInfo{std::to_string(s + 1), count, new ContigInfo[count]{}});
    scaffold.contigs.reserve(count);
    for (uint32_t c = 0; c < count; ++c) {
      const SavedContig& contig = records.nextContig(c == 0);
      info.contigsInfo[c] = {"", nullptr, contig.frontGapNum, contig.frontGapSize,
                             records.nextBases(contig)};
      std::vector<uint64_t> placeholders = records.nextPlaceholders(contig);
      if (c > 0) {
        const bool isPlaceholder = !placeholders.empty();
        gaps_.push_back({s, c, scaffold.contigs.back().end, contig.start, contig.unknown,
                         contig.frontGapSize, isPlaceholder, 0, std::move(placeholders)});
      }
      scaffold.contigs.push_back({contig.start, contig.end});
    }
    scaffold.lastBase = records.lastBase();
  }
  records.finish();
}

}  // namespace velk::run
