#include "bench/simulate.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string_view>

#include "placement/edgeCheck.h"

namespace velk::bench {
namespace {

constexpr std::string_view kBases = "ACGT";
constexpr uint64_t kBasesPerRepeats = 5'000'000;

std::string reversed(std::string_view bases) {
  std::string result(bases.size(), 'A');
  ReverseComplementSeq(result, std::string(bases));
  return result;
}

}  // namespace

Simulator::Simulator(uint64_t bases, const ReadModel& reads, uint64_t seed)
    : random_(seed), reads_(reads), genome_(bases, 'A') {
  for (char& base : genome_) base = kBases[below(4)];
  for (uint64_t i = 0; i < std::max<uint64_t>(1, bases / kBasesPerRepeats); ++i) {
    placeRepeats(7, 5000);
    placeRepeats(40, 1300);
    placeRepeats(60, 300);
    placeRepeats(3, 20000);
  }
}

// Copies a piece of the genome to other places, up to 2 % changed, half of the copies reversed.
void Simulator::placeRepeats(uint64_t copies, uint64_t length) {
  const std::string element = genome_.substr(below(genome_.size() - length), length);
  for (uint64_t i = 0; i < copies; ++i) {
    const double divergence = 0.02 * static_cast<double>(below(100)) / 100;
    std::string copy = below(2) == 0 ? element : reversed(element);
    for (char& base : copy) {
      if (happens(divergence)) base = kBases[below(4)];
    }
    genome_.replace(below(genome_.size() - length), length, copy);
  }
}

void Simulator::writeScaffolds(std::ostream& out) {
  std::exponential_distribution<double> contigLength(1.0 / 20000);
  uint64_t at = 0;
  for (int scaffold = 1; at < genome_.size(); ++scaffold) {
    const uint64_t end = std::min<uint64_t>(genome_.size(), at + 150000 + below(100000));
    std::string bases = genome_.substr(at, end - at);
    for (uint64_t gap = 300 + static_cast<uint64_t>(contigLength(random_));
         gap + 300 < bases.size();) {
      const uint64_t length = std::min(20 + below(2981), bases.size() - 300 - gap);
      bases.replace(gap, length, length, 'N');
      gap += length + 300 + static_cast<uint64_t>(contigLength(random_));
    }
    out << ">scaffold" << scaffold << "\n";
    for (std::size_t line = 0; line < bases.size(); line += 80) {
      out << std::string_view(bases).substr(line, 80) << "\n";
    }
    at = end;
  }
}

std::pair<std::string, std::string> Simulator::pair(const Fragment& fragment) {
  std::normal_distribution<double> lengths(fragment.mean, fragment.deviation);
  const auto length = static_cast<uint64_t>(std::clamp(
      std::round(lengths(random_)), static_cast<double>(reads_.length), fragment.mean * 2));
  const std::string_view bases =
      std::string_view(genome_).substr(below(genome_.size() - length), length);
  std::string left(bases.substr(0, reads_.length));
  std::string right = reversed(bases.substr(length - reads_.length));
  if (fragment.facing == Facing::kOutward) {
    left = reversed(left);
    right = reversed(right);
  }
  if (below(2) == 0) std::swap(left, right);
  return {std::move(left), std::move(right)};
}

std::string Simulator::single() {
  const std::string bases = genome_.substr(below(genome_.size() - reads_.length), reads_.length);
  return below(2) == 0 ? bases : reversed(bases);
}

// A walk between the levels of a sequencer's scale that mostly stays high and tires to the end.
void Simulator::makeQualities(std::size_t length) {
  qualities_.resize(length);
  int quality = 38;
  for (std::size_t i = 0; i < length; ++i) {
    const uint64_t step = below(100);
    if (step < 12) quality -= static_cast<int>(below(4 + 10 * i / length));
    if (step >= 80) quality += static_cast<int>(below(6));
    if (step == 50) quality = 12;
    quality = std::clamp(quality, 2, 41);
    qualities_[i] = static_cast<char>('!' + quality);
  }
}

void Simulator::putErrors(std::string& bases) {
  for (char& base : bases) {
    if (happens(reads_.error)) base = kBases[(kBases.find(base) + 1 + below(3)) % 4];
  }
  if (happens(0.002)) bases[below(bases.size())] = 'N';
}

void Simulator::writeRecord(std::ostream& out, std::string bases, uint64_t number, char mate) {
  putErrors(bases);
  makeQualities(bases.size());
  // Lane, tile and place on it, as the sequencers of the field name their reads.
  out << "@SIM:7:FLOW:" << 1 + number * 8 / 20'000'000 << ':' << 1101 + number / 40000 % 80 << ':'
      << 1000 + number % 40000 / 2 << ':' << 1000 + (number * 7919) % 90000 << '/' << mate << '\n'
      << bases << "\n+\n"
      << qualities_ << '\n';
}

}  // namespace velk::bench
