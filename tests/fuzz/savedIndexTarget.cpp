// Saved indexes, damaged and hostile. Input: a byte that chooses one of some whole indexes and
// whether the sums are made right, then changes: a part, a place in it, how many bytes, the bytes.
//
// What must hold: an index is refused with a message, or every look-up, every placement and every
// base of it lies in its contigs. One without a change is taken, and finds what an index that was
// not saved finds.
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "driver/velk.h"
#include "placement/batchScan.h"
#include "placement/engine.h"
#include "run/alignment.h"
#include "run/checksum.h"
#include "run/failure.h"
#include "run/flanks.h"
#include "run/preparation.h"
#include "run/savedIndex.h"
#include "run/verbs.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/files.h"

namespace velk::fuzz {
namespace {

using run::saved::Header;
using run::saved::kParts;

// Bases that look random, the same each time.
std::string basesOf(uint32_t seed, std::size_t length) {
  std::string bases;
  while (bases.size() < length) bases += "ACGT"[(seed = seed * 1664525U + 1013904223U) >> 30];
  return bases;
}

// Repeats beyond what one level of the index holds, letters that are no bases, gaps, short contigs.
std::string assemblyText() {
  const std::string one = basesOf(1, 900);
  const std::string repeat = basesOf(2, 90);
  std::string text = ">one\n" + one + std::string(60, 'N') + basesOf(3, 400) + "RYK" +
                     basesOf(4, 200) + std::string(10, 'N') + basesOf(5, 30) + "NNN" +
                     basesOf(6, 300) + "\n>repeats\n";
  for (uint32_t n = 0; n < 9; ++n) text += repeat + basesOf(10 + n, 25);
  text += "NNNNNNNN" + std::string(80, 'A') + one.substr(100, 300) + "NNT\n>lone\n" + one + "\n";
  return text;
}

// An index as it was made, and how a run asks for it.
struct Made {
  run::Arguments arguments;
  std::string bytes;
  std::vector<Hit> hits;  // that are found without it
};

struct World {
  World() {
    add(31, 40, 0);
    add(15, 20, 0);
    add(40, 30, 4);
    const std::string one = basesOf(1, 900);
    const std::string repeat = basesOf(2, 90);
    const std::string behind = basesOf(3, 400);
    reads = {one.substr(820, 80),
             one.substr(840) + basesOf(50, 40),
             basesOf(51, 30) + behind.substr(0, 60),
             behind.substr(340) + "RYK" + basesOf(4, 60),
             repeat,
             repeat.substr(40) + basesOf(10, 25) + repeat.substr(0, 20),
             std::string(70, 'A'),
             basesOf(52, 100),
             one.substr(300, 100)};
    for (std::size_t n = reads.size(); n-- > 0;) {
      reads.push_back(run::reverseComplementOf(reads[n]));
    }
  }

  void add(int kmer, int shortest, int cut) {
    run::Arguments arguments;
    arguments.assembly = folder.write("assembly.fa", assemblyText());
    arguments.folder = folder.path("index");
    arguments.kmer = kmer;
    arguments.shortestContig = shortest;
    arguments.cut = cut;
    arguments.readLength = 50;
    arguments.placeholders = {60, 8};
    arguments.threads = 1;
    arguments.quiet = true;
    run::makeIndex(arguments);
    made.push_back({arguments, contentOf(arguments.folder), {}});
  }

  test::TemporaryFolder folder;
  std::vector<Made> made;
  std::vector<std::string> reads;
};

// Checks that what is found lies where there is something.
class Checker {
 public:
  static constexpr bool kTakesRefusals = true;

  explicit Checker(const run::Assembly& assembly) : assembly_(assembly) {}

  void found(const Found& found, const std::string&) {
    check(found.hit);
    hits_.push_back(found.hit);
  }
  void anchored(const Anchored& anchored) { check(anchored.hit); }
  void refused(const Refused& refused) { check(refused.hit); }

  void check(const Hit& hit) const {
    require(hit.scaffold < assembly_.scaffolds().size() &&
                hit.contig < assembly_.scaffolds()[hit.scaffold].contigs.size(),
            "a hit on no contig");
    const auto length = static_cast<int64_t>(assembly_.basesOf(hit.scaffold, hit.contig).size());
    require(-200 < hit.offset && hit.offset < length, "a hit beside its contig");
  }

  const std::vector<Hit>& hits() const { return hits_; }

 private:
  const run::Assembly& assembly_;
  std::vector<Hit> hits_;
};

std::vector<Hit> search(const World& world, const run::Arguments& arguments,
                        const run::Assembly& assembly, const SeedIndex& index) {
  Checker checker(assembly);
  Engine engine{index, arguments.kmer};
  for (const bool arePairs : {false, true}) {
    std::vector<std::string> a = world.reads;
    std::vector<std::string> b(a.rbegin(), a.rend());
    const Batch batch{a.data(),
                      arePairs ? b.data() : nullptr,
                      static_cast<int64_t>(a.size()),
                      0,
                      1,
                      assembly.model(),
                      {arguments.kmer, arePairs ? 300 : 0, 100, 50, 0.9, 0.3, false}};
    scanBatch(engine, batch, checker);
  }
  for (const std::string& read : world.reads) {
    if (read.size() < static_cast<std::size_t>(arguments.kmer)) continue;
    const auto answer = index.placeOf(
        packedKmer(std::string_view(read).substr(0, static_cast<std::size_t>(arguments.kmer))));
    if (!answer) continue;
    const KmerPlace& place = answer->first;
    checker.check({place.scaffold, place.contig, static_cast<int64_t>(place.start)});
    require(place.start + static_cast<uint64_t>(arguments.kmer) <=
                assembly.basesOf(place.scaffold, place.contig).size(),
            "a k-mer beyond its contig");
  }
  return checker.hits();
}

// All that a run does with an index, saved or not, in small. Returns what it finds.
std::vector<Hit> use(const World& world, const run::Arguments& arguments) {
  Kmer = arguments.kmer;
  const auto assembly = run::loadAssembly(arguments, 50, run::openIndex(arguments));
  SeedIndex index;
  run::setIndex(index, *assembly, arguments.kmer, 1);
  run::Evidence evidence(assembly->gaps().size(), {"library"});
  run::noteRepeats(index.text(), *assembly, {100, 300, 100}, evidence);
  std::size_t bases = 0;
  for (uint64_t gap = 0; gap < assembly->gaps().size(); ++gap) {
    bases += run::flanksOf(*assembly, gap).size();
  }
  for (std::size_t s = 0; s < assembly->scaffolds().size(); ++s) {
    for (std::size_t c = 0; c < assembly->scaffolds()[s].contigs.size(); ++c) {
      for (const char letter : assembly->basesOf(s, c)) bases += letter == 'A' ? 1 : 0;
    }
  }
  require(bases > 0 || assembly->scaffolds().empty(), "contigs without a letter");
  return search(world, arguments, *assembly, index);
}

void setDigits(run::saved::Md5Digits& digits, std::string_view text) {
  const std::string md5 = run::md5OfText(text);
  std::memcpy(digits.data(), md5.data(), digits.size());
}

// Makes the sums of the header and of the small parts right.
void seal(std::string& bytes) {
  Header header{};
  std::memcpy(&header, bytes.data(), sizeof header);
  for (std::size_t n = 0; n < kParts; ++n) {
    run::saved::PartPlace& place = header.parts[n];
    if (!isSmall(static_cast<run::saved::Part>(n)) || place.offset > bytes.size()) continue;
    setDigits(place.md5, std::string_view(bytes).substr(place.offset, place.bytes));
  }
  setDigits(header.md5, {reinterpret_cast<const char*>(&header), offsetof(Header, md5)});
  std::memcpy(bytes.data(), &header, sizeof header);
}

// Makes the changes that the input says; the part behind the last one is the header.
void change(std::string& bytes, std::string_view input) {
  Header header{};
  std::memcpy(&header, bytes.data(), sizeof header);
  while (input.size() >= 4) {
    const auto byteAt = [&](std::size_t n) { return static_cast<unsigned char>(input[n]); };
    const std::size_t part = byteAt(0) % (kParts + 1);
    const std::size_t start = part < kParts ? header.parts[part].offset : 0;
    const std::size_t size = part < kParts ? header.parts[part].bytes : sizeof(Header);
    const std::size_t at = byteAt(1) + std::size_t{256} * byteAt(2);
    const std::size_t count = std::min<std::size_t>(byteAt(3) % 9, input.size() - 4);
    for (std::size_t n = 0; n < count && size > 0; ++n) {
      bytes[start + (at + n) % size] = input[4 + n];
    }
    input.remove_prefix(4 + count);
  }
}

}  // namespace

void tryInput(Input input) {
  static World world;
  static const MemoryFile kFile;
  const auto choice = static_cast<unsigned>(input.next());
  Made& made = world.made[choice / 2 % world.made.size()];
  if (made.hits.empty()) {
    made.hits = use(world, made.arguments);
    require(!made.hits.empty(), "nothing is found");
  }
  std::string bytes = made.bytes;
  change(bytes, input.rest());
  if (choice % 2 == 0) seal(bytes);
  kFile.fill(bytes);
  run::Arguments arguments = made.arguments;
  arguments.index = kFile.name();
  bool isTaken = false;
  std::vector<Hit> hits;
  try {
    hits = use(world, arguments);
    isTaken = true;
  } catch (const run::Failure& failure) {
    require(std::string_view(failure.what()).starts_with(kFile.name() + " is "),
            "a message that does not name the index");
  }
  if (bytes == made.bytes) require(isTaken && hits == made.hits, "an index that was not changed");
}

}  // namespace velk::fuzz
