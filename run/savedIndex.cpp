#include "run/savedIndex.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

#include "kmer/machine.h"
#include "run/checksum.h"
#include "run/failure.h"
#include "run/terminal.h"

namespace velk::run {
namespace {

using saved::kParts;
using saved::Part;

std::string_view digitsOf(const saved::Md5Digits& digits) {
  return {digits.data(), digits.size()};
}

uint64_t wholePages(uint64_t bytes) {
  return (bytes + saved::kPage - 1) / saved::kPage * saved::kPage;
}

// The bytes of a value of each part, by its number.
constexpr std::array<uint64_t, kParts> kWidths{
    sizeof(uint64_t),
    1,
    sizeof(saved::SavedScaffold),
    sizeof(saved::SavedContig),
    sizeof(uint64_t),
    1,
    64,
    sizeof(Bucket),
    16,
    sizeof(Bucket),
    16,
};

std::vector<uint64_t> sorted(std::vector<uint64_t> lengths) {
  std::sort(lengths.begin(), lengths.end());
  lengths.erase(std::unique(lengths.begin(), lengths.end()), lengths.end());
  return lengths;
}

std::string listOf(const std::vector<uint64_t>& lengths) {
  std::string list;
  for (const uint64_t length : lengths) {
    list += (list.empty() ? "" : ",") + std::to_string(length);
  }
  return list.empty() ? "none" : list;
}

// Whether a level has all its ranges, within so many buckets.
bool areSound(std::span<const SeedIndex::RegionRange> ranges, uint64_t buckets) {
  return ranges.size() == SeedIndex::kRegions &&
         std::all_of(ranges.begin(), ranges.end(), [&](const SeedIndex::RegionRange& range) {
           return range.size != 0 && range.first <= buckets && range.size <= buckets - range.first;
         });
}

bool isSoundText(const ContigText& text) {
  if (text.lines().size() != ContigText::linesFor(text.end())) return false;
  bool areMarked = true;
  text.forEachNoWindow([&](uint64_t p) { areMarked &= text.isMarkedRepeated(p); });
  return areMarked;
}

bool isSame(const saved::Source& source, const FileIdentity& identity) {
  return source.bytes == identity.bytes && digitsOf(source.md5) == identity.md5;
}

}  // namespace

SavedIndex::SavedIndex(const std::string& file) : file_(file), mapped_(file) {
  checkHeader();
  checkOptions();
  checkParts();
  for (std::size_t n = 0; n < kParts; ++n) {
    if (isSmall(static_cast<Part>(n))) requireSum(static_cast<Part>(n));
  }
}

void SavedIndex::failDamaged(const std::string& what) const {
  throw Failure(Status::kFailed, file_ + " is a damaged index: " + what);
}

void SavedIndex::failOther(const std::string& what) const {
  throw Failure(Status::kPreflight, file_ + " is the index of " + what);
}

void SavedIndex::checkHeader() {
  const auto fail = [&](const std::string& what) { throw Failure(Status::kFailed, file_ + what); };
  const auto& magic = saved::kMagic;
  if (mapped_.bytes() < magic.size() ||
      std::memcmp(mapped_.memory(), magic.data(), magic.size()) != 0) {
    fail(" is no index of velk-run");
  }
  if (mapped_.bytes() < saved::kPage) failDamaged("it ends in its header");
  std::memcpy(&header_, mapped_.memory(), sizeof header_);
  if (header_.byteOrder != saved::kByteOrder) {
    fail(" is an index for machines of another byte order");
  }
  if (header_.version != saved::kVersion) {
    fail(" is an index of form " + std::to_string(header_.version) + ", and this velk-run has " +
         std::to_string(saved::kVersion) + ": make it again");
  }
  const std::string_view summed(mapped_.memory(), offsetof(saved::Header, md5));
  if (md5OfText(summed) != digitsOf(header_.md5)) {
    failDamaged("its header has another checksum than was written");
  }
  if (header_.bytes != mapped_.bytes()) {
    failDamaged("it has " + countText(mapped_.bytes()) + " bytes, and " + countText(header_.bytes) +
                " were written");
  }
}

// Those of a command line, and so within 31 bits.
void SavedIndex::checkOptions() const {
  constexpr int64_t kMost = 0x7FFFFFFF;
  const auto isOption = [](int64_t value) { return value >= 0 && value <= kMost; };
  if (header_.kmer == 0 || !isOption(header_.kmer) || !isOption(header_.shortestContig) ||
      !isOption(header_.cut) || !isOption(header_.readLength)) {
    failDamaged("its options can't be so");
  }
}

// Each part lies behind the one before, and the file ends with the last.
void SavedIndex::checkParts() const {
  uint64_t end = saved::kPage;
  for (std::size_t n = 0; n < kParts; ++n) {
    const saved::PartPlace& place = header_.parts[n];
    const bool isInside = end <= header_.bytes && place.bytes <= header_.bytes - end;
    if (place.offset != end || !isInside || place.bytes % kWidths[n] != 0) {
      failDamaged(std::string("the place of its ") + saved::kPartNames[n] + " is wrong");
    }
    end = wholePages(end + place.bytes);
  }
  if (end != header_.bytes) failDamaged("bytes follow its last part");
}

void SavedIndex::requireSum(Part part) const {
  if (md5OfText(textOf(part)) == digitsOf(placeOf(part).md5)) return;
  failDamaged(std::string("its ") + saved::kPartNames[static_cast<std::size_t>(part)] +
              " have another checksum than was written");
}

void SavedIndex::requireSums(int threads) const {
  std::array<bool, kParts> areWhole{};
  forEachInParallel(static_cast<std::size_t>(threads), kParts, [&](std::size_t n) {
    areWhole[n] = md5OfText(textOf(static_cast<Part>(n))) == digitsOf(header_.parts[n].md5);
  });
  for (std::size_t n = 0; n < kParts; ++n) {
    if (!areWhole[n]) requireSum(static_cast<Part>(n));
  }
}

std::shared_future<void> sumBeside(std::shared_ptr<const SavedIndex> index) {
  return std::async([index = std::move(index)] {
    if (index != nullptr) index->requireSums(1);
  });
}

void SavedIndex::requireSame(const char* option, const std::string& ofIndex,
                             const std::string& now) const {
  if (ofIndex == now) return;
  failOther("other options: " + std::string(option) + " is " + ofIndex + " in it, and " + now +
            " here");
}

void SavedIndex::requireOptions(const Arguments& arguments) const {
  requireSame("-k", std::to_string(header_.kmer), std::to_string(arguments.kmer));
  requireSame("-L", std::to_string(header_.shortestContig),
              std::to_string(arguments.shortestContig));
  requireSame("-C", std::to_string(header_.cut), std::to_string(arguments.cut));
  const auto lengths = part<const uint64_t>(Part::kPlaceholders);
  requireSame("--placeholder", listOf(sorted({lengths.begin(), lengths.end()})),
              listOf(sorted(arguments.placeholders)));
}

void SavedIndex::requireReadLength(int readLength) const {
  if (header_.cut == 0) return;  // contigs do not depend on it
  requireSame("-r", std::to_string(header_.readLength), std::to_string(readLength));
}

void SavedIndex::requireAssemblyEnds(const std::string& assembly, const FileIdentity& ends) const {
  const saved::Source known{header_.assembly.bytes, header_.assemblyEnds};
  if (isSame(known, ends)) return;
  failOther("another assembly than " + assembly +
            ", or of a copy of it that is compressed in another way");
}

void SavedIndex::requireAssembly(const std::string& assembly, const FileIdentity& whole) const {
  if (!isSame(header_.assembly, whole)) failOther("another assembly than " + assembly);
}

void SavedIndex::requireAgp(const std::optional<FileIdentity>& agp) const {
  const bool hasAgp = header_.agp.md5 != saved::Md5Digits{};
  if (!agp && hasAgp) failOther("an assembly with an AGP file (--agp), and none is given");
  if (agp && !hasAgp) failOther("an assembly without an AGP file (--agp)");
  if (agp && !isSame(header_.agp, *agp)) failOther("an assembly with another AGP file (--agp)");
}

void SavedIndex::setIndex(SeedIndex& index, const Assembly& assembly) const {
  index.lay(assembly.model(), static_cast<uint32_t>(assembly.scaffolds().size()),
            static_cast<int>(header_.kmer));
  if (!index.hasText()) failDamaged("it has no k-mers");
  const auto scaffolds = part<const saved::SavedScaffold>(Part::kScaffolds);
  const auto contigs = part<const saved::SavedContig>(Part::kContigs);
  uint64_t before = 0;  // contigs of the scaffolds in front
  uint32_t scaffold = 0;
  for (TextContig& contig : index.text().contigs()) {
    while (scaffold < contig.scaffold) before += scaffolds[scaffold++].contigs;
    contig.hasNonAcgt = contigs[before + contig.contig].hasNonAcgt;
  }
  auto next = static_cast<std::size_t>(Part::kText);
  uint64_t buckets = 0;  // of the level whose ranges follow
  bool isSound = true;
  SeedIndex::forEachKept(index, [&](auto& array) {
    using Value = std::remove_reference_t<decltype(array[0])>;
    const auto values = part<Value>(static_cast<Part>(next++));
    array = {values.data(), values.size()};
    if constexpr (std::is_same_v<Value, Bucket>) buckets = values.size();
    if constexpr (std::is_same_v<Value, SeedIndex::RegionRange>)
      isSound &= areSound(values, buckets);
  });
  if (!isSound || !isSoundText(index.text())) failDamaged("its parts do not fit each other");
}

}  // namespace velk::run
