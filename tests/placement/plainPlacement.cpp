#include "tests/placement/plainPlacement.h"

#include <cctype>
#include <cmath>
#include <utility>

namespace velk::test {
namespace {

int64_t lengthOf(const std::string& bases) {
  return static_cast<int64_t>(bases.size());
}

bool isBase(char letter) {
  switch (letter) {
    case 'A':
    case 'C':
    case 'G':
    case 'T':
    case 'a':
    case 'c':
    case 'g':
    case 't':
      return true;
    default:
      return false;
  }
}

// What two k-mers have in common when they count as the same: their last 32 letters in upper case,
// where another letter than a base reads as A and turns an A or G before it into C or T. In front
// of less than 32 letters it leaves a mark.
std::string keyOf(const std::string& kmer) {
  const std::string last = kmer.size() > 32 ? kmer.substr(kmer.size() - 32) : kmer;
  std::string key;
  if (!last.empty() && kmer.size() < 32 && !isBase(last[0])) key.push_back('^');
  for (std::size_t i = 0; i < last.size(); ++i) {
    char letter = 'A';
    if (isBase(last[i])) letter = static_cast<char>(std::toupper(last[i]));
    if (i + 1 < last.size() && !isBase(last[i + 1])) {
      if (letter == 'A') {
        letter = 'C';
      } else if (letter == 'G') {
        letter = 'T';
      }
    }
    key += letter;
  }
  return key;
}

}  // namespace

std::string plainReverseComplement(const std::string& read) {
  std::string reversed;
  for (std::size_t i = read.size(); i > 0; --i) {
    char complement = 'A';
    if (read[i - 1] == 'A' || read[i - 1] == 'a') complement = 'T';
    if (read[i - 1] == 'C' || read[i - 1] == 'c') complement = 'G';
    if (read[i - 1] == 'G' || read[i - 1] == 'g') complement = 'C';
    reversed += complement;
  }
  return reversed;
}

// ---- the assembly -------------------------------------------------------------------------------

PlainPlacement::PlainPlacement(std::vector<TestScaffold> assembly, const PlainSettings& settings)
    : assembly_(std::move(assembly)), settings_(settings) {
  uint64_t gaps = 0;
  for (std::size_t s = 0; s < assembly_.size(); ++s) {
    gapsBefore_.push_back(gaps);
    if (!assembly_[s].empty()) gaps += assembly_[s].size() - 1;
    for (std::size_t c = 0; c < assembly_[s].size(); ++c) {
      const std::string& bases = assembly_[s][c].bases;
      if (bases.size() < static_cast<uint32_t>(settings_.shortestContig)) continue;
      for (int64_t start = 0; start <= lengthOf(bases) - settings_.kmer; ++start) {
        const std::string key = keyOf(bases.substr(static_cast<std::size_t>(start),
                                                   static_cast<std::size_t>(settings_.kmer)));
        const Place place{static_cast<int64_t>(s), static_cast<int64_t>(c), start, true};
        const auto [entry, isNew] = index_.emplace(key, place);
        if (!isNew) entry->second.unique = false;
      }
    }
  }
}

const TestContig& PlainPlacement::contigAt(int64_t scaffold, int64_t contig) const {
  return assembly_.at(static_cast<std::size_t>(scaffold)).at(static_cast<std::size_t>(contig));
}

std::vector<PlainHit> PlainPlacement::hitsOf(const std::string& read) const {
  std::vector<PlainHit> hits;
  for (int64_t i = 0; i < lengthOf(read) - settings_.kmer + 1; ++i) {
    const auto found = index_.find(
        keyOf(read.substr(static_cast<std::size_t>(i), static_cast<std::size_t>(settings_.kmer))));
    if (found == index_.end() || !found->second.unique) continue;
    const Place& place = found->second;
    hits.push_back({i, place.scaffold, place.contig, place.start - i});
  }
  return hits;
}

void PlainPlacement::record(const PlainHit& hit, const char* kind, int64_t right,
                            const PlainRead& read, int64_t position, int64_t unmoved,
                            std::vector<TestRecord>& records) {
  const auto front = static_cast<uint64_t>(right - 1);
  records.push_back({read.bases, static_cast<uint64_t>(hit.scaffold), front, position,
                     gapsBefore_.at(static_cast<std::size_t>(hit.scaffold)) + front,
                     static_cast<uint64_t>(contigAt(hit.scaffold, right).gapBefore)});
  events_.push_back({std::string("record: ") + kind, read.origin, hit.scaffold, hit.contig,
                     hit.offset, right, unmoved, records.back()});
}

void PlainPlacement::tellAnchor(const PlainHit& hit, const PlainRead& anchor, int64_t right,
                                int64_t position) {
  events_.push_back(
      {"anchored", anchor.origin, hit.scaffold, hit.contig, hit.offset, right, position, {}});
}

void PlainPlacement::refuse(const PlainHit& hit, const PlainRead& read, const std::string& reason,
                            int64_t right, int64_t position) {
  if (!refused_.insert({hit.scaffold, hit.contig, hit.offset}).second) {
    meet("refused again");
    return;
  }
  meet("refused");
  events_.push_back({"refused: " + reason,
                     read.origin,
                     hit.scaffold,
                     hit.contig,
                     hit.offset,
                     right,
                     position,
                     {}});
}

// ---- the batch ----------------------------------------------------------------------------------

std::vector<TestRecord> PlainPlacement::scan(const std::vector<std::string>& reads, std::size_t t,
                                             std::size_t workers) {
  std::vector<TestRecord> records;
  for (std::size_t j = t; j < reads.size(); j += workers) {
    const std::string& read = reads[j];
    if (read.find('N') != std::string::npos || lengthOf(read) < settings_.kmer) continue;
    const auto entry = static_cast<int64_t>(j);
    if (single({read, {entry, 0, false}}, records) != lengthOf(read) - settings_.kmer + 1) continue;
    single({plainReverseComplement(read), {entry, 0, true}}, records);
  }
  return records;
}

std::vector<TestRecord> PlainPlacement::scan(std::vector<std::string>& first,
                                             std::vector<std::string>& second, std::size_t t,
                                             std::size_t workers) {
  std::vector<TestRecord> records;
  for (std::size_t j = t; j < first.size(); j += workers) {
    scanPair(static_cast<int64_t>(j), first[j], second[j], records);
  }
  return records;
}

void PlainPlacement::scanPair(int64_t entry, std::string& a, std::string& b,
                              std::vector<TestRecord>& records) {
  if (a.find('N') != std::string::npos || b.find('N') != std::string::npos) return;
  // The reads of a pair that is rewritten are described as they were sequenced.
  const bool isRewritten = settings_.insert > 1000;
  if (isRewritten) {
    meet("batch: pair rewritten");
    const std::string oldA = a;
    a = plainReverseComplement(b);
    b = plainReverseComplement(oldA);
  }
  if (lengthOf(a) < settings_.kmer || lengthOf(b) < settings_.kmer) return;
  const int64_t endOfA = lengthOf(a) - settings_.kmer + 1;
  const int64_t endOfB = lengthOf(b) - settings_.kmer + 1;
  const int mateOfA = isRewritten ? 1 : 0;
  const int mateOfB = isRewritten ? 0 : 1;
  const PlainRead asA(a, {entry, mateOfA, isRewritten});
  const PlainRead reversedA(plainReverseComplement(a), {entry, mateOfA, !isRewritten});
  const PlainRead asB(b, {entry, mateOfB, isRewritten});
  const PlainRead reversedB(plainReverseComplement(b), {entry, mateOfB, !isRewritten});
  meet("batch: try 1");
  if (forward(asA, reversedB, records) != endOfA) return;
  meet("batch: try 2");
  if (reverse(reversedB, asA, records) != endOfB) return;
  meet("batch: try 3");
  if (reverse(reversedA, asB, records) != endOfA) return;
  meet("batch: try 4");
  if (forward(asB, reversedA, records) == endOfB) meet("batch: no try");
}

namespace {

// The checks of the plain model: a read against a contig, without gaps.

char baseAt(const std::string& bases, int64_t i) {
  return bases.at(static_cast<std::size_t>(i));
}

int64_t cutOff(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483648LL;
  return static_cast<int64_t>(value);
}

double share(int64_t same, int64_t of) {
  return static_cast<double>(same) / static_cast<double>(of);
}

}  // namespace

std::string PlainPlacement::overRightEnd(const std::string& contig, const std::string& read,
                                         int64_t offset) {
  if (lengthOf(contig) > lengthOf(read) + offset) return "inside the contig";
  const int64_t overlap = lengthOf(contig) - offset;
  if (overlap < cutOff(static_cast<double>(read.size()) * settings_.overRatio)) {
    meet("right end: short overlap");
    return "short overlap";
  }
  int64_t same = 0;
  for (int64_t j = 0; j < overlap; ++j) {
    if (baseAt(contig, offset + j) == baseAt(read, j)) ++same;
  }
  return share(same, overlap) >= settings_.mapCut ? "" : "unlike";
}

std::string PlainPlacement::overLeftEnd(const std::string& contig, const std::string& read,
                                        int64_t offset) {
  const int64_t reach = lengthOf(read) + offset;
  std::string reason = "unlike";
  int64_t same = 0;
  if (lengthOf(contig) < reach) {
    meet("left end: over a short contig");
    for (int64_t j = 0; j < lengthOf(contig); ++j) {
      if (baseAt(read, j - offset) == baseAt(contig, j)) ++same;
    }
    const double least = static_cast<double>(read.size()) * settings_.overRatio;
    if (least > static_cast<double>(contig.size())) {
      meet("left end: contig too short");
      same = 0;
      reason = "short overlap";
    }
  } else {
    for (int64_t j = 0; j < reach; ++j) {
      if (baseAt(read, j - offset) == baseAt(contig, j)) ++same;
    }
  }
  return share(same, reach) >= settings_.mapCut ? "" : reason;
}

std::string PlainPlacement::onContig(const std::string& contig, const std::string& read,
                                     int64_t offset) const {
  const int64_t contigLength = lengthOf(contig);
  const int64_t readLength = lengthOf(read);
  const double least = static_cast<double>(readLength) * settings_.overRatio;
  if (offset > 0 && least > static_cast<double>(contigLength - offset)) return "short overlap";
  if (offset < 0 && least > static_cast<double>(offset + readLength)) return "short overlap";
  int64_t compared = 0;
  int64_t contigStart = 0;
  int64_t readStart = 0;
  if (offset >= 0) {
    contigStart = offset;
    compared = contigLength - offset;
    if (compared > readLength) compared = readLength;
  } else {
    readStart = -offset;
    compared = contigLength - offset >= readLength ? offset + readLength : contigLength;
  }
  int64_t same = 0;
  for (int64_t j = 0; j < compared; ++j) {
    if (baseAt(contig, contigStart + j) == baseAt(read, readStart + j)) ++same;
  }
  return share(same, compared) >= settings_.mapCut ? "" : "unlike";
}

}  // namespace velk::test
