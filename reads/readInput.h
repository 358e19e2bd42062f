// An input of a run: a file of single reads, two files of mates, or one interleaved file.
//
// Opened once. takeSample() reads its first records and keeps them; fill() then hands out the whole
// input from the start, the sample first. Mates are compared by name as they stream, and both
// mates' numbers at the end.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reads/readBatch.h"
#include "reads/recordSource.h"

namespace velk::reads {

/// The files of an input.
struct InputFiles {
  std::string first;            // reads, first mates, or both mates interleaved
  std::string second{};         // second mates; empty without such a file
  bool areInterleaved = false;  // whether `first` has both mates of each pair

  bool arePairs() const { return areInterleaved || !second.empty(); }
};

/// A read that is kept.
struct KeptRead {
  std::string name;
  std::string bases;
  std::string quality;

  explicit KeptRead(const RecordView& read)
      : name(read.name), bases(read.bases), quality(read.quality) {}

  RecordView view() const { return {name, bases, quality}; }
};

/// The first records of an input.
struct Sample {
  std::vector<KeptRead> first;
  std::vector<KeptRead> second;  // of the same pairs; empty for single reads
  bool isAll = false;            // whether the input has no more
};

/// Whether the qualities of a sample are most likely Phred+64, the scale of sequencers before 2011:
/// none below that scale, the best beyond what Phred+33 is used for. False without qualities.
bool looksLikePhred64(const Sample& sample);

class ReadInput {
 public:
  /// Opens the files. Throws InputError. `number`: of the input in the run, from 0.
  ReadInput(InputFiles files, uint32_t number, Helpers helpers);

  /// Reads up to `most` reads or pairs, or until they have `mostBytes` characters. Throws
  /// InputError, and fill() then does so behind the records before. Called once, before fill().
  const Sample& takeSample(std::size_t most, std::size_t mostBytes);

  /// Fills `batch` (inout) with the next reads or pairs, at most `most` or as many as have some
  /// millions of characters. Returns whether there were any. Throws InputError: where mates' names
  /// differ, one file has fewer mates, a record is cut short or the file damaged.
  bool fill(ReadBatch& batch, std::size_t most);

  /// What takeSample() has read, also where it has thrown.
  const Sample& sample() const { return sample_; }

  const InputFiles& files() const { return files_; }
  Fixes fixes() const;

  /// Bytes read of all its files, as they are stored, and the bytes that they have; 0 where that is
  /// not known (pipes). May be asked by any thread.
  uint64_t bytesRead() const;
  uint64_t bytes() const;

  /// Reads or pairs handed out so far.
  uint64_t records() const { return records_; }

 private:
  bool next(RecordView& first, RecordView& second);
  bool read(RecordView& first, RecordView& second);
  void readMate(RecordView& first, RecordView& second);
  bool giveOfSample(ReadBatch& batch);

  InputFiles files_;
  uint32_t number_;
  std::unique_ptr<RecordSource> first_;
  std::unique_ptr<RecordSource> second_;  // null: single reads, or interleaved
  std::optional<KeptRead> held_;          // interleaved: the first mate, until its mate is read
  Sample sample_;
  std::size_t sampleGiven_ = 0;
  std::optional<InputError> failure_;  // met by takeSample()
  uint64_t read_ = 0;                  // reads or pairs read
  uint64_t records_ = 0;
};

}  // namespace velk::reads
