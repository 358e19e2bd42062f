#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/kmerWalk.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

constexpr int kAhead = 4;  // entries between the fetch of a read's first slots and its scan
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

}  // namespace

void FindReads(int t) {
  BatchScan scan(t);
  const int64_t ahead = kAhead * int64_t{threadNum};
  for (int64_t j = t; j < bufferNum; j += threadNum) {
    if (j + ahead < bufferNum) {
      KmerWalk::fetchAhead(*kmerHash, Kmer, readsA[j + ahead]);
      if (readsB != nullptr) KmerWalk::fetchAhead(*kmerHash, Kmer, readsB[j + ahead]);
    }
    if (readsB == nullptr) {
      scan.scanSingle(readsA[j]);
    } else {
      scan.scanPair(readsA[j], readsB[j]);
    }
  }
  foundReadNum[t] = scan.found();
}

}  // namespace velk
