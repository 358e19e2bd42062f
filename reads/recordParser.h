// One FASTQ or FASTA record after the other, off the front of a text.
//
// A FASTQ record of four lines and a FASTA record of two, which is what nearly all files have, is
// handed out where it stands; others, and lower case, are put together first. Qualities may begin
// with '@' or '>' on any line: they end where there are as many as bases.
#pragma once

#include <string>
#include <string_view>

#include "reads/recordSource.h"

namespace velk::reads {

enum class TextFormat { kFastq, kFasta };

class RecordParser {
 public:
  explicit RecordParser(TextFormat format) : format_(format) {}

  /// Takes a record off the front of `text`, which `isAll` that is left or goes on. Fills `record`
  /// (out), valid as long as the text is and until the next call. Returns the number of its
  /// characters; 0 when it may go on behind the text. Throws RecordFault. REQUIRES: the text is not
  /// empty and does not begin with a line end.
  std::size_t take(std::string_view text, bool isAll, RecordView& record);

  /// What was fixed in the records taken.
  const Fixes& fixes() const { return fixes_; }

 private:
  std::size_t takeFourLines(std::string_view text, RecordView& record);
  std::size_t takeFastq(std::string_view text, bool isAll, RecordView& record);
  std::size_t takeFasta(std::string_view text, bool isAll, RecordView& record);
  std::string_view cleaned(std::string_view bases);
  void countFixes(bool hadReturn, bool wasWrapped);

  TextFormat format_;
  Fixes fixes_;
  std::string bases_;      // of a record on several lines
  std::string quality_;    // likewise
  std::string upper_;      // bases that were not all letters in upper case
  bool wasLower_ = false;  // whether any of the current record were in lower case
};

}  // namespace velk::reads
