// Simulates what the benchmarks read: a genome with repeats, an assembly of it with gaps, reads
// with wrong bases and with qualities about as varied, hence as compressible, as a sequencer's.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace velk::bench {

/// How the two reads of a fragment lie: towards each other, or away from each other.
enum class Facing { kInward, kOutward };

struct Fragment {
  double mean;       // bases, outer ends
  double deviation;  // bases
  Facing facing;
};

struct ReadModel {
  uint32_t length = 150;  // bases
  double error = 0.01;    // share of wrong bases
};

class Simulator {
 public:
  /// Makes a genome of `bases` bases: random ones, and in every 5 Mb four families of repeats (7
  /// copies of 5 kb, 40 of 1.3 kb, 60 of 300 b, 3 of 20 kb), on both strands, up to 2 % divergent.
  Simulator(uint64_t bases, const ReadModel& reads, uint64_t seed);

  /// Writes the genome as scaffolds of about 200 kb: contigs of about 20 kb (at least 300 bases),
  /// gaps of 20 to 3000 bases.
  void writeScaffolds(std::ostream& out);

  /// The two reads of a fragment from anywhere on either strand, each 5' to 3'.
  std::pair<std::string, std::string> pair(const Fragment& fragment);

  /// A read from anywhere on either strand.
  std::string single();

  /// Puts wrong bases into a read, and an N into one of 500.
  void putErrors(std::string& bases);

  /// Writes a FASTQ record, with wrong bases put into `bases`.
  void writeRecord(std::ostream& out, std::string bases, uint64_t number, char mate);

 private:
  uint64_t below(uint64_t limit) { return random_() % limit; }
  bool happens(double chance) { return static_cast<double>(random_() >> 11) * 0x1p-53 < chance; }
  void placeRepeats(uint64_t copies, uint64_t length);
  void makeQualities(std::size_t length);

  std::mt19937_64 random_;
  ReadModel reads_;
  std::string genome_;
  std::string qualities_;  // of the read being written
};

}  // namespace velk::bench
