#include <array>
#include <bit>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/kmerWalk.h"
#include "placement/scout.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

// Whether the batch has pairs that are turned round before they are tried.
bool turnsPairs() {
  return readsB != nullptr && insertLength > kLongestShortInsert;
}

bool containsN(const std::string& read) {
  return read.find('N') != std::string::npos;
}

bool isShorterThanKmer(const std::string& read) {
  return read.size() < static_cast<std::size_t>(Kmer);
}

// The number of k-mers of `read`: where a placement routine's walk ends that placed nothing.
int64_t kmersOf(const std::string& read) {
  return static_cast<int64_t>(read.size()) - Kmer + 1;
}

const std::string& reverseComplementIn(std::string& buffer, const std::string& read) {
  buffer.resize(read.size());
  ReverseComplementSeq(buffer, read);
  return buffer;
}

// Scans one worker's share of the batch; its strings and the buffers of the thread's walks live as
// long as the pass.
class BatchScan {
 public:
  explicit BatchScan(int t) : t_(t) {}
  ~BatchScan() { KmerWalk::releaseBuffers(); }
  BatchScan(const BatchScan&) = delete;
  BatchScan& operator=(const BatchScan&) = delete;

  uint32_t found() const { return n_; }

  void scanSingle(const std::string& read, Scouted& known) {
    if (mayContainN(known, read) || isShorterThanKmer(read)) return;
    const std::string& turned = known.turned;
    KmerWalk::takeStrands({strand(read, known, false), strand(turned, known, true)});
    int64_t i = 0;
    checkSingleRead(i, read, n_, t_);
    if (i != kmersOf(read)) return;
    checkSingleRead(i, turnedBases(known, read), n_, t_);
  }

  void scanPair(std::string& a, std::string& b, Scouted& knownA, Scouted& knownB) {
    if (mayContainN(knownA, a) || mayContainN(knownB, b)) return;
    if (turnsPairs()) {
      LongReverseComplement(a, b);
      if (isShorterThanKmer(a) || isShorterThanKmer(b)) return;
      KmerWalk::takeStrands({strand(a, knownB, true), strand(reversedA_, knownB, false),
                             strand(b, knownA, true), strand(reversedB_, knownA, false)});
      tryPair(
          a, b, [&]() -> const std::string& { return reverseComplementIn(reversedA_, a); },
          reverseComplementIn(reversedB_, b));
      return;
    }
    if (isShorterThanKmer(a) || isShorterThanKmer(b)) return;
    KmerWalk::takeStrands({strand(a, knownA, false), strand(knownA.turned, knownA, true),
                           strand(b, knownB, false), strand(knownB.turned, knownB, true)});
    tryPair(
        a, b, [&]() -> const std::string& { return turnedBases(knownA, a); },
        turnedBases(knownB, b));
  }

 private:
  static bool mayContainN(const Scouted& known, const std::string& read) {
    return !known.hasBasesAlone && containsN(read);
  }

  static Strand strand(const std::string& bases, const Scouted& known, bool isTurned) {
    if (!known.hasBasesAlone) return {};
    return {&bases, &known, isTurned};
  }

  // Tries 1 and 2 read the fragment as a on the contig strand and b opposite, 3 and 4 the other way
  // round. The first try that settles the pair ends it.
  template <class TurnA>
  void tryPair(const std::string& a, const std::string& b, TurnA turnA,
               const std::string& reversedB) {
    int64_t i = 0;
    checkForwardRead(i, a, reversedB, n_, t_);
    if (i != kmersOf(a)) return;
    checkReverseRead(i, reversedB, a, n_, t_);
    if (i != kmersOf(b)) return;
    const std::string& reversedA = turnA();
    checkReverseRead(i, reversedA, b, n_, t_);
    if (i != kmersOf(a)) return;
    checkForwardRead(i, b, reversedA, n_, t_);
  }

  int t_;           // the worker
  uint32_t n_ = 0;  // records in its row
  std::string reversedA_;
  std::string reversedB_;
};

// A worker's share of a batch, with what is scouted of the entries ahead of the one that is
// scanned.
class Share {
 public:
  explicit Share(int t)
      : t_(t),
        entries_(t < bufferNum ? (bufferNum - 1 - t) / threadNum + 1 : 0),
        scout_(*kmerHash, Kmer) {}

  int64_t entries() const { return entries_; }

  /// Where the e-th entry of the share stands in the buffer.
  int64_t bufferIndex(int64_t e) const { return t_ + e * threadNum; }

  /// What is known of the reads of an entry.
  struct Entry {
    Scouting a;
    Scouting b;
  };

  /// Scouts ahead of entry e, and returns what is known of that one.
  Entry& comeTo(int64_t e) {
    if (e == 0) {
      for (int64_t ahead = 0; ahead < kSteps; ++ahead) step(ahead);
    }
    step(e + kSteps);
    return entry(e);
  }

 private:
  static constexpr int64_t kSteps = 6;

  Entry& entry(int64_t e) { return scouted_[static_cast<std::size_t>(e) % scouted_.size()]; }

  // Calls scout(read, bases) for the reads of entry e, if there is such an entry.
  template <class Step>
  void forReads(int64_t e, Step scout) {
    if (e < 0 || e >= entries_) return;
    const int64_t j = bufferIndex(e);
    scout(entry(e).a, readsA[j]);
    if (readsB != nullptr) scout(entry(e).b, readsB[j]);
  }

  // Takes entry e through the first step, and those before it on, an entry a step.
  void step(int64_t e) {
    using Bases = const std::string&;
    forReads(e, [](Scouting&, Bases bases) { Scout::approach(bases); });
    forReads(e - 1, [&](Scouting& s, Bases bases) { scout_.look(s, bases); });
    forReads(e - 2, [&](Scouting& s, Bases bases) { scout_.ask(s, bases); });
    forReads(e - 3, [&](Scouting& s, Bases bases) { scout_.find(s, bases); });
    forReads(e - 4, [&](Scouting& s, Bases bases) { scout_.findAgain(s, bases); });
    forReads(e - 5, [&](Scouting& s, Bases bases) {
      // The read that is tried first is mostly placed where its first k-mer lies.
      const bool isTriedFirst = readsB != nullptr && !turnsPairs() && &s == &entry(e - 5).a;
      if (!isTriedFirst || !s.runsByFirstKmer()) scout_.compare(s, bases);
    });
  }

  int t_;            // the worker
  int64_t entries_;  // in the share
  Scout scout_;
  // As many as a power of two, for the sake of entry().
  std::array<Entry, std::bit_ceil(std::size_t{kSteps + 1})> scouted_{};
};

}  // namespace

void FindReads(int t) {
  BatchScan scan(t);
  Share share(t);
  for (int64_t e = 0; e < share.entries(); ++e) {
    Share::Entry& known = share.comeTo(e);
    const int64_t j = share.bufferIndex(e);
    if (readsB == nullptr) {
      scan.scanSingle(readsA[j], known.a);
    } else {
      scan.scanPair(readsA[j], readsB[j], known.a, known.b);
    }
  }
  foundReadNum[t] = scan.found();
}

}  // namespace velk
