#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "tests/run/bamFile.h"
#include "tests/run/madeReads.h"

namespace velk::test {
namespace {

using run::Gap;
using run::OutputOptions;
using run::ReadKind;

const std::vector<std::string> kNames{"reads.bam",       "reads.bam.bai",    "pairs.fq.gz",
                                      "pairs.fq.gz.gzi", "singles.fq.gz",    "singles.fq.gz.gzi",
                                      "flanks.fa.gz",    "flanks.fa.gz.gzi", "gaps.tsv",
                                      "gaps.bed",        "gaps.idx"};

std::vector<std::vector<std::string>> rowsOf(const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::vector<std::string> row;
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, '\t');) row.push_back(field);
    rows.push_back(row);
  }
  return rows;
}

TEST_F(OutputsTest, TheSameBytesForAnyThreadsAndMemory) {
  const std::string one = write("one");
  OutputOptions options;
  options.threads = 3;
  const std::string three = write("three", options);
  options.memory = 100000;
  const std::string small = write("small", options);
  EXPECT_GT(spilledBytes_, 100000U);
  for (const std::string& name : kNames) {
    const std::string expected = contentOf(one + "/" + name);
    EXPECT_FALSE(expected.empty()) << name;
    EXPECT_EQ(contentOf(three + "/" + name) == expected, true) << name;
    EXPECT_EQ(contentOf(small + "/" + name) == expected, true) << name;
  }
}

TEST_F(OutputsTest, TheHeader) {
  OutputOptions options;
  options.names = {"ecoli", "1.2", "ILLUMINA"};
  EXPECT_EQ(readBam(write("out", options) + "/reads.bam").header,
            "@HD\tVN:1.6\tSO:coordinate\n"
            "@SQ\tSN:chr0\tLN:2946\n"
            "@SQ\tSN:chr1\tLN:2966\n"
            "@SQ\tSN:chr2\tLN:2961\n"
            "@RG\tID:short\tLB:short\tSM:ecoli\tPL:ILLUMINA\tPI:200\n"
            "@RG\tID:mates\tLB:mates\tSM:ecoli\tPL:ILLUMINA\tPI:700\n"
            "@RG\tID:single\tLB:single\tSM:ecoli\tPL:ILLUMINA\n"
            "@PG\tID:velk-run\tPN:velk-run\tVN:1.2\n");
}

// What has to hold of every record by itself.
TEST_F(OutputsTest, EveryRecordIsSound) {
  const BamFile bam = readBam(write("out") + "/reads.bam");
  ASSERT_GT(bam.records.size(), 3000U);
  std::pair<int, int64_t> before{0, 0};
  for (const BamRecord& record : bam.records) {
    const std::pair<int, int64_t> place{record.scaffold, record.position};
    EXPECT_LE(before, place);
    before = place;
    const bool isUnmapped = (record.flag & 0x4) != 0;
    EXPECT_EQ(isUnmapped, record.cigar.empty());
    EXPECT_EQ(record.mapq, isUnmapped || record.tags.at("zx") == "E" ? 0 : 60);
    EXPECT_EQ(record.tags.count("NM"), isUnmapped ? 0U : 1U);
    EXPECT_EQ(record.bases.size(), static_cast<std::size_t>(kReadLength));
    int64_t covered = 0;  // of the read
    int64_t aligned = 0;
    std::istringstream cigar(record.cigar);
    for (int64_t length = 0; cigar >> length;) {
      covered += length;
      const int operation = cigar.get();
      EXPECT_TRUE(operation == 'M' || operation == 'S') << record.cigar;
      if (operation == 'M') aligned += length;
    }
    if (!isUnmapped) {
      EXPECT_EQ(covered, kReadLength);
      const auto& scaffold = assembly().scaffolds()[static_cast<std::size_t>(record.scaffold)];
      EXPECT_LE(record.position + aligned, static_cast<int64_t>(scaffold.length));
      EXPECT_GT(aligned, 0);
    }
    EXPECT_EQ(record.flag & 0x1, record.tags.at("RG") == "single" ? 0 : 1);
    EXPECT_TRUE((record.flag & 0x104) != 0x104);
  }
}

// The aligned bases of records that a contig speaks for are the contig's, as far as -M says.
TEST_F(OutputsTest, SureRecordsAgreeWithTheContigs) {
  uint64_t compared = 0;
  for (const BamRecord& record : readBam(write("out") + "/reads.bam").records) {
    if (record.mapq == 0) continue;
    const auto scaffold = static_cast<std::size_t>(record.scaffold);
    const std::size_t clipped =
        record.cigar.find('S') < record.cigar.find('M') ? std::stoul(record.cigar) : 0;
    const int64_t start = record.position - static_cast<int64_t>(clipped);
    const auto& contigs = assembly().scaffolds()[scaffold].contigs;
    const run::Stretch aligned{record.position,
                               record.position + kReadLength - static_cast<int64_t>(clipped)};
    for (std::size_t c = 0; c < contigs.size() && record.cigar.back() == 'M'; ++c) {
      const run::Stretch contig = run::stretchOf(contigs[c]);
      const run::Stretch shared = run::common(contig, aligned);
      if (shared.length() < 16) continue;
      int64_t same = 0;
      for (int64_t at = shared.start; at < shared.end; ++at) {
        const auto inRead = static_cast<std::size_t>(at - start);
        const auto inContig = static_cast<std::size_t>(at - contig.start);
        same += record.bases[inRead] == assembly().basesOf(scaffold, c)[inContig] ? 1 : 0;
      }
      EXPECT_GE(static_cast<double>(same) / static_cast<double>(shared.length()), 0.98);
      ++compared;
    }
  }
  EXPECT_GT(compared, 2000U);
}

// The two reads of a pair say the same of each other.
TEST_F(OutputsTest, MatesFitTogether) {
  std::map<std::string, std::map<int, BamRecord>> pairsOf;  // by library and name
  std::vector<BamRecord> secondary;
  for (const BamRecord& record : readBam(write("out") + "/reads.bam").records) {
    if ((record.flag & 0x1) == 0) continue;
    if ((record.flag & 0x100) != 0) {
      secondary.push_back(record);
      continue;
    }
    auto& reads = pairsOf[record.tags.at("RG") + record.name];
    EXPECT_TRUE(reads.emplace(record.flag & 0xc0, record).second) << "two primary records";
  }
  uint64_t proper = 0;
  for (const auto& [name, reads] : pairsOf) {
    ASSERT_EQ(reads.size(), 2U) << name;
    const BamRecord& one = reads.at(0x40);
    const BamRecord& two = reads.at(0x80);
    for (const auto& [read, mate] : {std::pair{one, two}, {two, one}}) {
      EXPECT_EQ((read.flag & 0x8) != 0, (mate.flag & 0x4) != 0);
      EXPECT_EQ((read.flag & 0x20) != 0, (mate.flag & 0x10) != 0);
      EXPECT_EQ(read.mateScaffold, mate.scaffold);
      EXPECT_EQ(read.matePosition, mate.position);
      EXPECT_EQ(read.flag & 0x2, mate.flag & 0x2);
      EXPECT_EQ(read.templateLength, -mate.templateLength);
    }
    proper += (one.flag & 0x2) != 0 ? 1 : 0;
  }
  EXPECT_GT(proper, 100U);
  EXPECT_GT(secondary.size(), 20U);
  for (const BamRecord& record : secondary) {
    const BamRecord& mate =
        pairsOf.at(record.tags.at("RG") + record.name).at((record.flag & 0xc0) ^ 0xc0);
    EXPECT_EQ(record.matePosition, mate.position);
    EXPECT_EQ(record.templateLength, 0);
  }
}

// What is found is what placement found: each record has its gap and position, once.
TEST_F(OutputsTest, TheSetOfRecordsIsWhatWasFound) {
  using Place = std::tuple<std::string, std::string, int, std::string, std::string>;
  std::multiset<Place> expected;
  for (const run::FoundEntry& entry : entries_) {
    for (const run::FoundPlace& place : entry.places) {
      const uint64_t gap = assembly().gapInFront(place.scaffold, place.contigBehind);
      const auto& library = libraries_[entry.library];
      const int number = !library.arePairs() ? 0 : place.mate == 0 ? 0x40 : 0x80;
      expected.insert({library.name, std::string(entry.texts[0].name), number, std::to_string(gap),
                       std::to_string(place.position)});
    }
  }
  std::multiset<Place> found;
  for (const BamRecord& record : readBam(write("out") + "/reads.bam").records) {
    if (record.tags.count("zp") == 0) continue;
    std::string name = record.name;
    name.erase(0, name.find(':') + 1);  // the libraries have equal names
    found.insert({record.tags.at("RG"), name, record.flag & 0xc0, record.tags.at("zg"),
                  record.tags.at("zp")});
  }
  EXPECT_EQ(found == expected, true);
  EXPECT_GT(found.size(), 1500U);
}

// The made genome has no repeats, so what is sure is true, and what could be sure is.
TEST_F(OutputsTest, WhatIsSureIsTrue) {
  std::map<std::string, uint64_t> counts;
  for (const BamRecord& record : readBam(write("out") + "/reads.bam").records) {
    const std::string& library = record.tags.at("RG");
    const uint32_t input = library == "short" ? 0 : library == "mates" ? 1 : 2;
    const std::string number = record.name.substr(record.name.find("read") + 4);
    const TruePlace truth = truthOf(input, std::stoul(number), (record.flag & 0x80) != 0 ? 1 : 0);
    const bool isReversed = (record.flag & 0x10) != 0;
    const std::string& certainty = record.tags.at("zx");
    ++counts[certainty];
    if (record.mapq == 0) continue;
    EXPECT_EQ(isReversed, truth.isReversed);
    const std::size_t clipped =
        record.cigar.find('S') < record.cigar.find('M') ? std::stoul(record.cigar) : 0;
    EXPECT_EQ(record.position - static_cast<int64_t>(clipped), truth.start) << record.name;
  }
  EXPECT_GT(counts["X"], 1000U);
  EXPECT_GT(counts["E"], 300U);
  EXPECT_GT(counts["C"], 10U);
}

TEST_F(OutputsTest, TheIndexFindsWhatTheFileHas) {
  const std::string dir = write("out");
  const BamFile bam = readBam(dir + "/reads.bam");
  for (int scaffold = 0; scaffold < 3; ++scaffold) {
    std::vector<BamRecord> expected;
    for (const BamRecord& record : bam.records) {
      if (record.scaffold == scaffold) expected.push_back(record);
    }
    EXPECT_EQ(
        readBamRegion(dir + "/reads.bam", dir + "/reads.bam.bai", scaffold, 0, 1 << 20) == expected,
        true);
  }
  EXPECT_LT(readBamRegion(dir + "/reads.bam", dir + "/reads.bam.bai", 0, 350, 351).size(),
            bam.records.size() / 10);
}

// A read as the FASTQ files have it.
struct FastqRead {
  std::string name;
  std::string gap;
  std::string bases;
  std::string quality;
};

std::vector<FastqRead> readFastq(const std::string& file) {
  std::vector<FastqRead> reads;
  std::istringstream lines(readBgzip(file));
  for (std::string head; std::getline(lines, head);) {
    FastqRead read;
    std::string plus;
    std::getline(lines, read.bases);
    std::getline(lines, plus);
    std::getline(lines, read.quality);
    EXPECT_EQ(head.at(0), '@');
    EXPECT_EQ(plus, "+");
    EXPECT_EQ(read.bases.size(), read.quality.size());
    const std::size_t tab = head.find("\tzg:i:");
    read.name = head.substr(1, tab - 1);
    read.gap = head.substr(tab + 6);
    reads.push_back(read);
  }
  return reads;
}

TEST_F(OutputsTest, PairsStandTogetherOrderedByGap) {
  const auto reads = readFastq(write("out") + "/pairs.fq.gz");
  ASSERT_GT(reads.size(), 1000U);
  ASSERT_EQ(reads.size() % 2, 0U);
  std::set<std::pair<std::string, std::string>> seen;
  for (std::size_t n = 0; n < reads.size(); n += 2) {
    EXPECT_EQ(reads[n].name, reads[n + 1].name);
    EXPECT_EQ(reads[n].gap, reads[n + 1].gap);
    EXPECT_TRUE(seen.insert({reads[n].gap, reads[n].name}).second) << "twice at a gap";
    const std::size_t before = n < 2 ? 0 : n - 2;
    EXPECT_LE(std::stoul(reads[before].gap), std::stoul(reads[n].gap));
  }
}

TEST_F(OutputsTest, ReadsAsTheyWereSequenced) {
  const auto reads = readFastq(write("out") + "/pairs.fq.gz");
  std::map<std::string, const run::FoundEntry*> entryOf;
  for (const run::FoundEntry& entry : entries_) {
    entryOf[libraries_[entry.library].name + ":" + std::string(entry.texts[0].name)] = &entry;
  }
  uint64_t withoutQuality = 0;
  for (std::size_t n = 0; n < reads.size(); ++n) {
    // A name that two libraries have bears its library's name; this world has many of them.
    if (reads[n].name.find(':') == std::string::npos) continue;
    const reads::RecordView& text = entryOf.at(reads[n].name)->texts[n % 2];
    EXPECT_EQ(reads[n].bases, text.bases);
    const bool hasQuality = !text.quality.empty();
    EXPECT_EQ(reads[n].quality,
              hasQuality ? std::string(text.quality) : std::string(text.bases.size(), 'B'));
    withoutQuality += hasQuality ? 0 : 1;
  }
  EXPECT_GT(withoutQuality, 50U);
}

TEST_F(OutputsTest, NamesAreOneReadsAlone) {
  const std::string dir = write("out");
  std::map<std::string, std::set<std::string>> librariesOf;  // by name
  for (const BamRecord& record : readBam(dir + "/reads.bam").records) {
    librariesOf[record.name].insert(record.tags.at("RG"));
  }
  uint64_t prefixed = 0;
  for (const auto& [name, libraries] : librariesOf) {
    EXPECT_EQ(libraries.size(), 1U) << name;
    if (!name.starts_with(*libraries.begin() + ":")) continue;
    ++prefixed;
  }
  EXPECT_GT(prefixed, 10U);
  EXPECT_LT(prefixed, librariesOf.size());
}

TEST_F(OutputsTest, WithoutAnchorsOnlyWhatWasFound) {
  OutputOptions options;
  options.areAnchorsWritten = false;
  const std::string dir = write("out", options);
  std::multiset<std::pair<std::string, std::string>> expected;  // gap, bases as sequenced
  for (const BamRecord& record : readBam(dir + "/reads.bam").records) {
    if (record.tags.count("zp") == 0 || record.tags.at("zx") == "C") continue;
    const bool isReversed = (record.flag & 0x10) != 0;
    expected.insert(
        {record.tags.at("zg"), isReversed ? reverseComplement(record.bases) : record.bases});
  }
  std::multiset<std::pair<std::string, std::string>> written;
  for (const char* name : {"/pairs.fq.gz", "/singles.fq.gz"}) {
    for (const FastqRead& read : readFastq(dir + name)) written.insert({read.gap, read.bases});
  }
  EXPECT_EQ(written == expected, true);
}

TEST_F(OutputsTest, TheTablesAddUp) {
  const std::string dir = write("out");
  std::map<std::string, std::map<std::string, uint64_t>> counts;  // by gap: library and kind
  std::set<std::tuple<std::string, std::string, int>> distinct;
  for (const BamRecord& record : readBam(dir + "/reads.bam").records) {
    if (record.tags.count("zp") == 0) continue;
    const std::string kind = record.tags.at("zx") == "X"   ? "exact"
                             : record.tags.at("zx") == "E" ? "estimate"
                                                           : "contained";
    ++counts[record.tags.at("zg")][record.tags.at("RG") + ":" + kind];
    distinct.insert({record.tags.at("RG"), record.name, record.flag & 0xc0});
  }
  EXPECT_EQ(reads_, distinct.size());
  const auto rows = rowsOf(contentOf(dir + "/gaps.tsv"));
  const auto bed = rowsOf(contentOf(dir + "/gaps.bed"));
  ASSERT_EQ(rows.size(), assembly().gaps().size() + 1);
  ASSERT_EQ(bed.size(), assembly().gaps().size());
  const auto& names = rows[0];
  for (std::size_t g = 0; g < bed.size(); ++g) {
    const auto& row = rows[g + 1];
    const Gap& gap = assembly().gaps()[g];
    ASSERT_EQ(row.size(), names.size());
    const std::vector<std::string> place{assembly().scaffolds()[gap.scaffold].name,
                                         std::to_string(gap.start), std::to_string(gap.end)};
    EXPECT_EQ(row[0], std::to_string(g));
    EXPECT_EQ(std::vector(row.begin() + 1, row.begin() + 4), place);
    EXPECT_EQ(std::vector(bed[g].begin(), bed[g].begin() + 3), place);
    uint64_t belonging = 0;
    for (std::size_t column = 0; column < row.size(); ++column) {
      const std::string& name = names[column];
      const bool isKind = name.ends_with(":exact") || name.ends_with(":estimate");
      if (isKind) belonging += std::stoul(row[column]);
      if (isKind || name.ends_with(":contained")) {
        EXPECT_EQ(std::to_string(counts[row[0]][name]), row[column]) << name;
      }
    }
    EXPECT_EQ(bed[g][3], row[0]);
    EXPECT_EQ(bed[g][4], std::to_string(std::min<uint64_t>(1000, belonging)));
    EXPECT_EQ(bed[g][5], ".");
  }
}

TEST_F(OutputsTest, NothingFoundGivesWholeEmptyFiles) {
  entries_.clear();
  const std::string dir = write("out");
  EXPECT_TRUE(readBam(dir + "/reads.bam").records.empty());
  EXPECT_EQ(readBgzip(dir + "/pairs.fq.gz"), "");
  EXPECT_EQ(readBgzip(dir + "/singles.fq.gz"), "");
  EXPECT_EQ(rowsOf(contentOf(dir + "/gaps.bed")).size(), assembly().gaps().size());
  EXPECT_TRUE(readBamRegion(dir + "/reads.bam", dir + "/reads.bam.bai", 0, 0, 1000).empty());
}

TEST_F(OutputsTest, TheIndexOfAnEmptyFileHasNoBlocks) {
  entries_.clear();
  OutputOptions options;
  for (const int threads : {1, 2, 3}) {
    options.threads = threads;
    const std::string dir = write("out" + std::to_string(threads), options);
    EXPECT_EQ(contentOf(dir + "/pairs.fq.gz.gzi"), std::string(8, '\0')) << threads;
    EXPECT_EQ(contentOf(dir + "/singles.fq.gz.gzi"), std::string(8, '\0')) << threads;
  }
}

}  // namespace
}  // namespace velk::test
