#include "check/readPass.h"

#include <algorithm>
#include <string_view>

#include "check/progress.h"
#include "check/readFile.h"
#include "driver/velk.h"
#include "reads/mateNames.h"
#include "streaming/library.h"

namespace velk::check {
namespace {

constexpr uint64_t kReadOn = 64 << 20;  // inflated bytes of a gzip file that are read on
constexpr uint64_t kMostKept = 20000;   // records kept as a sample
constexpr int kLaterPlaces = 8;         // of a plain file, behind the first records
constexpr int kLaterRecords = 250;      // at each of them

void countRead(ReadStats& stats, const std::string& bases, uint64_t record) {
  ++stats.reads;
  stats.bases += bases.size();
  stats.longest = std::max<uint64_t>(stats.longest, bases.size());
  if (bases.find('N') != std::string::npos) ++stats.withN;
  if (bases.size() < static_cast<std::size_t>(std::max(Kmer, 0))) ++stats.shorterThanK;
  if (bases.size() > static_cast<std::size_t>(std::max(readLen, 0))) ++stats.longerThanR;
  if (bases.ends_with('\r')) {
    ++stats.withReturn;
    if (stats.firstWithReturn == 0) stats.firstWithReturn = record;
  }
  if (std::any_of(bases.begin(), bases.end(), [](char c) { return c >= 'a' && c <= 'z'; })) {
    ++stats.withLower;
    if (stats.firstWithLower == 0) stats.firstWithLower = record;
  }
}

// A pass over the files of one input.
class Pass {
 public:
  Pass(Survey& survey, ReadInput& input, RecordReader& first, RecordReader* second)
      : survey_(survey), input_(input), first_(first), second_(second) {}

  PassResult run() {
    const uint64_t size = factsOf(input_.fileA).size;
    {
      Progress progress("reading " + input_.fileA, wantedBytes(size));
      while (wantsMore() && step(true)) {
        if (result_.pairs % 4096 == 0) progress.update(first_.lines().bytes());
      }
    }
    estimateRecords(size);
    if (survey_.arguments.deep) {
      first_.drain();
      if (second_ != nullptr) second_->drain();
    } else if (!first_.ended() && !isGzipName(input_.fileA)) {
      lookLater(size);
    }
    return result_;
  }

 private:
  bool isInterleaved() const { return input_.isPaired && second_ == nullptr; }

  uint64_t wantedBytes(uint64_t size) const {
    return survey_.arguments.deep ? size : std::min(size, kReadOn);
  }

  bool wantsMore() const {
    if (survey_.arguments.deep || result_.pairs < survey_.arguments.sample) return true;
    return isGzipName(input_.fileA) && first_.lines().bytes() < kReadOn;
  }

  // Reads a record, or a pair. Returns false at the end of either file.
  bool step(bool checkPairs) {
    Record mate;
    if (!first_.next(record_)) {
      noteEnd(second_ != nullptr && first_.ended() && !first_.fault() && second_->next(mate),
              Surplus::kSecond);
      return false;
    }
    RecordReader* const mates = isInterleaved() ? &first_ : second_;
    if (mates == nullptr) {
      countRead(input_.stats, record_.bases, ++result_.pairs);
      keep(nullptr);
      return true;
    }
    if (!mates->next(mate)) {
      noteEnd(checkPairs && mates->ended() && !mates->fault() && mates->lines().damage().empty(),
              Surplus::kFirst);
      return false;
    }
    ++result_.pairs;
    if (checkPairs && result_.nameRecord == 0 && !areMates(record_.header, mate.header)) {
      result_.nameRecord = isInterleaved() ? 2 * result_.pairs - 1 : result_.pairs;
      result_.nameA = record_.header.substr(0, record_.header.find_first_of(" \t"));
      result_.nameB = mate.header.substr(0, mate.header.find_first_of(" \t"));
    }
    countRead(input_.stats, record_.bases, result_.pairs);
    countRead(input_.stats, mate.bases, result_.pairs);
    keep(&mate);
    return true;
  }

  void noteEnd(bool hasSurplus, Surplus surplus) {
    if (hasSurplus && first_.lines().damage().empty()) result_.surplus = surplus;
  }

  void keep(const Record* mate) {
    if (input_.a.size() >= std::min(survey_.arguments.sample, kMostKept)) return;
    input_.a.push_back(record_.bases);
    if (mate != nullptr) input_.b.push_back(mate->bases);
  }

  void estimateRecords(uint64_t size) {
    input_.records = result_.pairs;
    const auto bytes = static_cast<double>(first_.lines().bytes());
    if (first_.ended() || bytes == 0) return;
    const double share = isGzipName(input_.fileA) ? compressedShare(input_.fileA) : 1;
    const double perRecord = bytes * share / static_cast<double>(result_.pairs);
    input_.records =
        std::max(input_.records, static_cast<uint64_t>(static_cast<double>(size) / perRecord));
  }

  // Looks at records at places further on in plain files. Mates are not in step there.
  void lookLater(uint64_t size) {
    for (int place = 1; place < kLaterPlaces; ++place) {
      const uint64_t offset = size / kLaterPlaces * static_cast<uint64_t>(place);
      if (offset < first_.lines().bytes() || first_.fault()) continue;
      if (!first_.seekBehind(offset)) continue;
      for (int i = 0; i < kLaterRecords && first_.next(record_); ++i) {
        countRead(input_.stats, record_.bases, 0);
      }
    }
  }

  Survey& survey_;
  ReadInput& input_;
  RecordReader& first_;
  RecordReader* second_;
  Record record_;
  PassResult result_;
};

std::string_view nameOf(const std::string& header) {
  return std::string_view(header).substr(1, header.find_first_of(" \t\r") - 1);
}

}  // namespace

bool areMates(const std::string& one, const std::string& other) {
  return reads::mayBeMates(nameOf(one), nameOf(other));
}

PassResult passRecords(Survey& survey, ReadInput& input, RecordReader& first,
                       RecordReader* second) {
  return Pass(survey, input, first, second).run();
}

}  // namespace velk::check
