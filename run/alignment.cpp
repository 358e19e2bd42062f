#include "run/alignment.h"

#include <algorithm>
#include <array>

#include "placement/edgeCheck.h"

namespace velk::run {
namespace {

// Operations of a CIGAR, as BAM numbers them.
constexpr uint32_t kAligned = 0;
constexpr uint32_t kClipped = 4;

// Whether the read's bases over contig `c` are the contig's.
bool agreesWith(const ScaffoldText& scaffold, uint64_t c, const Stretch& place,
                std::string_view read, double mapCut) {
  const Stretch contig = stretchOf(scaffold.contigs()[c]);
  const Stretch shared = common(contig, place);
  return agrees(scaffold.basesOf(c).data() + (shared.start - contig.start),
                read.data() + (shared.start - place.start), shared.length(), mapCut);
}

}  // namespace

bool agrees(const char* contig, const char* read, int64_t length, double mapCut) {
  if (length <= 0) return true;
  const auto same = countEqual(contig, read, static_cast<std::size_t>(length));
  return static_cast<double>(same) / static_cast<double>(length) >= mapCut;
}

Alignment alignedWithin(const Stretch& read, const Stretch& limits) {
  const Stretch aligned = common(read, limits);
  if (aligned.length() <= 0) return {};
  Alignment alignment{aligned, {}};
  const auto add = [&](int64_t length, uint32_t operation) {
    if (length > 0) alignment.cigar.push_back(static_cast<uint32_t>(length) << 4 | operation);
  };
  add(aligned.start - read.start, kClipped);
  add(aligned.length(), kAligned);
  add(read.end - aligned.end, kClipped);
  return alignment;
}

Alignment alignedOnContig(const ScaffoldText& scaffold, uint64_t contig, int64_t start,
                          std::string_view read, double mapCut) {
  const Stretch place{start, start + static_cast<int64_t>(read.size())};
  const std::vector<ContigPlace>& contigs = scaffold.contigs();
  Stretch limits{0, scaffold.length()};
  for (uint64_t c = contig; c-- > 0;) {
    const Stretch next = stretchOf(contigs[c]);
    if (place.start >= next.end) break;
    if (agreesWith(scaffold, c, place, read, mapCut)) continue;
    limits.start = next.end;
    break;
  }
  for (uint64_t c = contig + 1; c < contigs.size(); ++c) {
    const Stretch next = stretchOf(contigs[c]);
    if (place.end <= next.start) break;
    if (agreesWith(scaffold, c, place, read, mapCut)) continue;
    limits.end = next.start;
    break;
  }
  return alignedWithin(place, limits);
}

int differences(const ScaffoldText& scaffold, int64_t start, std::string_view read,
                const Alignment& alignment) {
  const std::vector<ContigPlace>& contigs = scaffold.contigs();
  const Stretch& aligned = alignment.aligned;
  int64_t same = 0;
  const auto first = std::partition_point(
      contigs.begin(), contigs.end(),
      [&](const ContigPlace& contig) { return stretchOf(contig).end <= aligned.start; });
  for (auto next = first; next != contigs.end(); ++next) {
    const Stretch contig = stretchOf(*next);
    if (contig.start >= aligned.end) break;
    const Stretch shared = common(contig, aligned);
    const std::string_view bases = scaffold.basesOf(static_cast<uint64_t>(next - contigs.begin()));
    same += static_cast<int64_t>(countEqual(bases.data() + (shared.start - contig.start),
                                            read.data() + (shared.start - start),
                                            static_cast<std::size_t>(shared.length())));
  }
  return static_cast<int>(aligned.length() - same);
}

namespace {

constexpr std::string_view kNucleotides = "ACGTUMRWSYKVHDBN";
constexpr std::string_view kComplements = "TGCAAKYWSRMBDHVN";
static_assert(kNucleotides.size() == kComplements.size());

constexpr std::array<char, 256> makeComplements() {
  std::array<char, 256> table{};
  for (std::size_t letter = 0; letter < table.size(); ++letter) {
    table[letter] = static_cast<char>(letter);
  }
  for (std::size_t i = 0; i < kNucleotides.size(); ++i) {
    table[static_cast<unsigned char>(kNucleotides[i])] = kComplements[i];
  }
  return table;
}

constexpr std::array<char, 256> kComplementOf = makeComplements();

}  // namespace

std::string reverseComplementOf(std::string_view bases) {
  std::string reversed(bases.rbegin(), bases.rend());
  std::transform(reversed.begin(), reversed.end(), reversed.begin(),
                 [](char base) { return kComplementOf[static_cast<unsigned char>(base)]; });
  return reversed;
}

std::string reversedQuality(std::string_view quality) {
  return {quality.rbegin(), quality.rend()};
}

}  // namespace velk::run
