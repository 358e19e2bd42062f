// Files of reads of every kind. Input: a byte for where a text is cut, then the file.
//
// What must hold: nothing but an InputError ends the reading, and it stays the same with a helper
// that unpacks ahead. A text that is read without one has the records of a plain reading. A record
// at the front of a text is the same however much of the text is at hand, once it is taken.
#include <algorithm>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "reads/letters.h"
#include "reads/recordParser.h"
#include "reads/recordSource.h"
#include "reads/storedFile.h"
#include "tests/fuzz/fuzz.h"
#include "tests/reads/plainRecords.h"

namespace velk::fuzz {
namespace {

using test::Read;
using test::Records;

Records recordsOf(const std::string& file, reads::Helpers helpers) {
  Records records;
  try {
    const auto source = reads::openRecords(file, helpers);
    reads::RecordView view;
    while (source->next(view)) {
      records.reads.push_back(
          {std::string(view.name), std::string(view.bases), std::string(view.quality)});
    }
  } catch (const reads::InputError& error) {
    records.error = error.what();
  }
  return records;
}

// What comes of taking a record off a text.
struct Taken {
  std::size_t used = 0;
  std::string fault;
  Read read;

  bool isDecided() const { return used != 0 || !fault.empty(); }
  bool operator==(const Taken&) const = default;
};

Taken takenOf(std::string_view text, bool isAll) {
  reads::RecordParser parser(text.front() == '@' ? reads::TextFormat::kFastq
                                                 : reads::TextFormat::kFasta);
  Taken taken;
  reads::RecordView view;
  try {
    taken.used = parser.take(text, isAll, view);
    if (taken.used == 0) return taken;
    taken.read = {std::string(view.name), std::string(view.bases), std::string(view.quality)};
  } catch (const reads::RecordFault& fault) {
    taken.fault = fault.what();
  }
  return taken;
}

void comparePart(std::string_view text, std::size_t size) {
  const Taken part = takenOf(text.substr(0, size), false);
  if (!part.isDecided()) return;
  require(part == takenOf(text, false), "more text makes another record");
  require(part == takenOf(text, true), "the end of the text makes another record");
}

void compareWithPlainReading(const std::string& text, const std::vector<Read>& got) {
  std::optional<std::vector<Read>> plain;
  try {
    plain = test::plainRecords(text);
  } catch (const std::exception&) {
    finding("a text is read that the plain reading cannot read");
  }
  require(got == *plain, "other records than those of the plain reading");
}

}  // namespace

void tryInput(Input input) {
  static const MemoryFile kFile;
  const auto cut = static_cast<std::size_t>(input.next());
  const std::string file(input.rest());
  kFile.fill(file);
  const Records records = recordsOf(kFile.name(), reads::Helpers::kNone);
  require(records == recordsOf(kFile.name(), reads::Helpers::kInflateByTwo),
          "helpers make a difference");
  if (!file.starts_with('@') && !file.starts_with('>')) return;
  if (records.error.empty()) compareWithPlainReading(file, records.reads);
  comparePart(file, 1 + cut * (file.size() - 1) / 63);
}

}  // namespace velk::fuzz
