#include "bench/world.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "bench/simulate.h"
#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/fetchKmers.h"
#include "streaming/readBuffer.h"

namespace velk::bench {
namespace {

constexpr std::size_t kReads = 4096;  // of each sort

// A folder of this process, removed at its end.
class Folder {
 public:
  Folder() { std::filesystem::create_directories(path_); }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string file(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("velk-kernels." + std::to_string(::getpid()));
};

// An indexed assembly and read files, made once.
struct World {
  Folder folder;

  World() {
    const std::string scaffolds = folder.file("scaffolds.fa");
    {
      std::ofstream out(scaffolds);
      Simulator(kGenome, ReadModel{}, 1).writeScaffolds(out);
    }
    uint64_t gaps = 0;
    InitialScaffold(scaffoldInfo, scaffolds, scaffoldSum);
    LoadScaffolds(scaffoldInfo, scaffolds, scaffoldSum, gaps);
    kmerHash = newKmerHash(kGenome * 4 / 3, LoadFactor);
    FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum);
    readSumInEachGap = new int[gaps]();
    allocateWorkerArrays(1);
    allocateRow(0, 1);
    writeReads();
  }

  void writeReads() const {
    std::ostringstream text;
    Simulator reads(1'000'000, ReadModel{}, 2);
    for (uint64_t i = 0; i < 20000; ++i) reads.writeRecord(text, reads.single(), i, '1');
    std::ofstream(folder.file("reads.fq")) << text.str();
    gzFile gzip = gzopen(folder.file("reads.fq.gz").c_str(), "wb");
    gzwrite(gzip, text.str().data(), static_cast<unsigned>(text.str().size()));
    gzclose(gzip);
    const std::string plain = folder.file("reads.fq");
    const std::string command = "bgzip -c '" + plain + "' >'" + plain + ".bgz'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("bgzip has failed");
  }
};

const World& world() {
  static const World made;
  return made;
}

}  // namespace

void makeWorld() {
  world();
}

std::string readFile(const std::string& name) {
  return world().folder.file(name);
}

const ContigInfo& contigOf(std::mt19937_64& random) {
  while (true) {
    const ScaffoldInfo& info = scaffoldInfo[random() % scaffoldSum];
    if (info.contigsSum < 3) continue;
    const ContigInfo& contig = info.contigsInfo[1 + random() % (info.contigsSum - 2)];
    if (contig.contigSeq.size() > 1000) return contig;
  }
}

std::vector<std::string> interiorReads() {
  makeWorld();
  std::mt19937_64 random(3);
  std::vector<std::string> reads(kReads);
  for (std::string& read : reads) {
    const std::string& bases = contigOf(random).contigSeq;
    read = bases.substr(1 + random() % (bases.size() - kRead - 2), kRead);
  }
  return reads;
}

std::string randomBases(std::mt19937_64& random, std::size_t length) {
  std::string bases(length, 'A');
  for (char& base : bases) base = "ACGT"[random() % 4];
  return bases;
}

std::vector<std::string> edgeReads() {
  makeWorld();
  std::mt19937_64 random(4);
  std::vector<std::string> reads(kReads);
  for (std::string& read : reads) {
    const std::string& bases = contigOf(random).contigSeq;
    read = bases.substr(bases.size() - 100) + randomBases(random, kRead - 100);
  }
  return reads;
}

std::vector<std::string> foreignReads() {
  makeWorld();
  std::mt19937_64 random(5);
  std::vector<std::string> reads(kReads);
  for (std::string& read : reads) read = randomBases(random, kRead);
  return reads;
}

std::vector<uint64_t> keysOf(const std::vector<std::string>& reads) {
  std::vector<uint64_t> keys;
  for (const std::string& read : reads) {
    const auto length = static_cast<std::size_t>(Kmer);
    for (std::size_t i = 0; i + length < read.size(); i += 8) {
      keys.push_back(packedKmer(std::string_view(read).substr(i, length)));
    }
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937_64(6));
  return keys;
}

}  // namespace velk::bench
