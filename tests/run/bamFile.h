// A BAM file as a test reads it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velk::test {

struct BamRecord {
  std::string name;
  int flag;
  int scaffold;
  int64_t position;
  int mapq;
  std::string cigar;
  int mateScaffold;
  int64_t matePosition;
  int64_t templateLength;
  std::string bases;
  std::string quality;                      // Phred+33; "*": none
  std::map<std::string, std::string> tags;  // as SAM has their values

  auto operator<=>(const BamRecord&) const = default;
};

struct BamFile {
  std::string header;
  std::vector<BamRecord> records;
};

BamFile readBam(const std::string& file);

/// The records that the file's index finds in [from, to) of a scaffold.
std::vector<BamRecord> readBamRegion(const std::string& file, const std::string& index,
                                     int scaffold, int64_t from, int64_t to);

/// The text of a file that bgzip has made.
std::string readBgzip(const std::string& file);

/// `bytes` of its text from `from` on, by the index of its blocks.
std::string readBgzipPart(const std::string& file, uint64_t from, uint64_t bytes);

}  // namespace velk::test
