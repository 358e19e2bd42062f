// Made reads whose true places are known, found as placement finds them.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/run/world.h"

namespace velk::test {

/// Where a read truly lies: its first base on its scaffold.
struct TruePlace {
  int64_t start;
  bool isReversed;
};

/// Fixture with a made assembly of several scaffolds and reads of it.
class MadeReads : public RunWorld {
 protected:
  static constexpr int kReadLength = 60;

  /// Makes the assembly: scaffolds with gaps of all lengths, a short contig between two gaps, N at
  /// both ends.
  void makeWorld(unsigned seed, const std::vector<uint64_t>& placeholders = {});

  /// Adds what is found of `count` reads, or pairs, of a library; with every tenth read changed to
  /// random bases, and a share of them without qualities.
  void makeReads(const run::Library& library, std::size_t count, double shareWithoutQuality);

  /// The true place of a read.
  TruePlace truthOf(uint32_t input, uint64_t record, int mate) const {
    return truth_.at({input, record, mate});
  }

  std::vector<run::Library> libraries_;
  std::vector<run::FoundEntry> entries_;

 private:
  using Random = std::mt19937;

  void makePair(const run::Library& library, uint64_t record, bool hasQuality, Random& random);
  void makeSingle(uint64_t record, bool hasQuality, Random& random);
  bool findFrom(int mate, const run::Library& library, run::FoundEntry& entry);
  reads::RecordView made(uint64_t record, std::size_t scaffold, const TruePlace& place, int mate,
                         bool hasQuality, Random& random);
  std::string onScaffold(const run::FoundEntry& entry, int mate) const;

  std::vector<std::string> genomes_;  // the scaffolds without gaps
  std::vector<std::size_t> scaffold_;
  std::map<std::tuple<uint32_t, uint64_t, int>, TruePlace> truth_;
};

}  // namespace velk::test
