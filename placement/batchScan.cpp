#include <array>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/kmerWalk.h"
#include "placement/scout.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

constexpr int kLongestShortInsert = 1000;  // bases; pairs of larger inserts are turned round

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

  void scanSingle(const std::string& read) {
    if (containsN(read) || isShorterThanKmer(read)) return;
    int64_t i = 0;
    checkSingleRead(i, read, n_, t_);
    if (i != kmersOf(read)) return;
    checkSingleRead(i, reverseComplementIn(reversedA_, read), n_, t_);
  }

  void scanPair(std::string& a, std::string& b) {
    if (containsN(a) || containsN(b)) return;
    if (insertLength > kLongestShortInsert) LongReverseComplement(a, b);
    if (isShorterThanKmer(a) || isShorterThanKmer(b)) return;

    // Tries 1 and 2 read the fragment as a on the contig strand and b opposite, 3 and 4 the other
    // way round. The first try that settles the pair ends it.
    int64_t i = 0;
    const std::string& reversedB = reverseComplementIn(reversedB_, b);
    checkForwardRead(i, a, reversedB, n_, t_);
    if (i != kmersOf(a)) return;
    checkReverseRead(i, reversedB, a, n_, t_);
    if (i != kmersOf(b)) return;
    const std::string& reversedA = reverseComplementIn(reversedA_, a);
    checkReverseRead(i, reversedA, b, n_, t_);
    if (i != kmersOf(a)) return;
    checkForwardRead(i, b, reversedA, n_, t_);
  }

 private:
  int t_;           // the worker
  uint32_t n_ = 0;  // records in its row
  std::string reversedA_;
  std::string reversedB_;
};

// A worker's share of a batch, with what is scouted of the entries ahead of the one that is
// scanned.
class Share {
 public:
  explicit Share(int t) : t_(t), scout_(*kmerHash, Kmer) {}

  int64_t entries() const { return t_ < bufferNum ? (bufferNum - 1 - t_) / threadNum + 1 : 0; }

  /// Where the e-th entry of the share stands in the buffer.
  int64_t bufferIndex(int64_t e) const { return t_ + e * threadNum; }

  /// Scouts ahead of entry e, and leaves the walk the hints of that one.
  void comeTo(int64_t e) {
    const Entry& entry = scouted_[static_cast<std::size_t>(e) % scouted_.size()];
    if (e == 0) {
      for (int64_t ahead = 0; ahead < kSteps * kAhead; ++ahead) step(ahead);
    }
    step(e + kSteps * kAhead);
    KmerWalk::takeHints(entry.a.run, entry.b.run);
  }

 private:
  static constexpr int64_t kSteps = 4;
  static constexpr int64_t kAhead = 2;  // entries between two steps of the scout

  struct Entry {
    Scouted a;
    Scouted b;
  };

  // Takes entry e through the first step, and those before it on.
  void step(int64_t e) {
    const auto forReads = [&](int64_t at, auto scout) {
      if (at < 0 || at >= entries()) return;
      Entry& entry = scouted_[static_cast<std::size_t>(at) % scouted_.size()];
      scout(entry.a, readsA[bufferIndex(at)]);
      if (readsB != nullptr) scout(entry.b, readsB[bufferIndex(at)]);
    };
    forReads(e, [](Scouted&, const std::string& read) { Scout::approach(read); });
    e -= kAhead;
    forReads(e, [&](Scouted& s, const std::string& read) { scout_.look(s, read); });
    forReads(e - kAhead, [&](Scouted& s, const std::string& read) { scout_.find(s, read); });
    forReads(e - 2 * kAhead, [&](Scouted& s, const std::string& read) { scout_.compare(s, read); });
  }

  int t_;  // the worker
  Scout scout_;
  std::array<Entry, kSteps * kAhead + 1> scouted_{};
};

}  // namespace

void FindReads(int t) {
  BatchScan scan(t);
  Share share(t);
  for (int64_t e = 0; e < share.entries(); ++e) {
    share.comeTo(e);
    const int64_t j = share.bufferIndex(e);
    if (readsB == nullptr) {
      scan.scanSingle(readsA[j]);
    } else {
      scan.scanPair(readsA[j], readsB[j]);
    }
  }
  foundReadNum[t] = scan.found();
}

}  // namespace velk
