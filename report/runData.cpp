#include "report/runData.h"

#include <fcntl.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "report/lineReader.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/tables.h"

namespace velk::report {
namespace {

using Parsed = nlohmann::json;
using run::Failure;
using run::Status;

constexpr std::size_t kFixedColumns = 11;  // of gaps.tsv, in front of those of the libraries
constexpr std::size_t kLastColumns = 2;

LibraryData libraryOf(const Parsed& json) {
  LibraryData library;
  library.name = json.at("name").get<std::string>();
  library.kind = json.at("kind").get<std::string>();
  library.arePairs = json.contains("insert");
  if (library.arePairs) {
    library.orientation = json.at("orientation").get<std::string>();
    library.orientationSource = json.at("orientation_source").get<std::string>();
    library.insert = json.at("insert").get<double>();
    library.insertSource = json.at("insert_source").get<std::string>();
    library.spread = json.at("spread").get<double>();
  }
  library.readsSearched = json.at("reads_searched").get<uint64_t>();
  library.readsFound = json.at("reads_found").get<uint64_t>();
  library.basesSearched = json.value("bases_searched", uint64_t{0});
  library.onContigs =
      json.value(library.arePairs ? "pairs_on_contigs" : "reads_on_contigs", uint64_t{0});
  library.withN = json.at("not_searched").at("with_n").get<uint64_t>();
  library.tooShort = json.at("not_searched").at("too_short").get<uint64_t>();
  return library;
}

RunData factsOf(const Parsed& json) {
  RunData data;
  data.version = json.at("program").at("version").get<std::string>();
  data.sample = json.at("sample").get<std::string>();
  const Parsed& options = json.at("options");
  data.settings = {
      options.at("kmer").get<int64_t>(),           options.at("read_length").get<int64_t>(),
      options.at("big_gap_length").get<int64_t>(), options.at("min_contig").get<int64_t>(),
      options.at("min_identity").get<double>(),    options.at("min_overlap").get<double>()};
  const Parsed& assembly = json.at("assembly");
  data.assembly = {assembly.at("name").get<std::string>(), assembly.at("scaffolds").get<uint64_t>(),
                   assembly.at("bases").get<uint64_t>(), assembly.at("contigs").get<uint64_t>()};
  data.warnings = json.at("warnings").get<std::vector<std::string>>();
  data.readsSearched = json.at("results").at("reads_searched").get<uint64_t>();
  data.readsFound = json.at("results").at("reads_found").get<uint64_t>();
  for (const Parsed& library : json.at("libraries")) data.libraries.push_back(libraryOf(library));
  return data;
}

class GapTableReader {
 public:
  GapTableReader(const std::string& file, std::string_view text, RunData& data)
      : table_(file, text), data_(data) {}

  void read() {
    const std::size_t libraries = data_.libraries.size();
    const std::size_t columns = kFixedColumns + libraries * run::kReadKinds + kLastColumns;
    std::vector<std::string_view> fields;
    if (!table_.next(fields) || fields.size() != columns || fields[0] != "gap") table_.fail();
    while (table_.next(fields)) {
      if (fields.size() != columns) table_.fail();
      if (number(fields[0]) != data_.gaps.size()) table_.fail();
      add(fields);
    }
  }

 private:
  uint64_t number(std::string_view field) const { return table_.number<uint64_t>(field); }

  void add(const std::vector<std::string_view>& fields) {
    GapData gap{scaffoldOf(fields[1]),
                number(fields[2]),
                number(fields[3]),
                number(fields[5]),
                fields[6] == "yes",
                number(fields[8]),
                number(fields[10]),
                {},
                0,
                data_.gaps.size()};
    const std::size_t last = fields.size() - kLastColumns;
    for (std::size_t i = kFixedColumns; i < last; ++i) {
      data_.counts.push_back(table_.number<uint32_t>(fields[i]));
    }
    if (fields[last] != ".") gap.implied = table_.number<int64_t>(fields[last]);
    gap.impliedBy = table_.number<uint32_t>(fields[last + 1]);
    if (gap.to < gap.from) table_.fail();
    data_.gaps.push_back(gap);
  }

  // Gaps of a scaffold follow each other.
  uint32_t scaffoldOf(std::string_view name) {
    if (data_.scaffolds.empty() || data_.scaffolds.back() != name)
      data_.scaffolds.emplace_back(name);
    return static_cast<uint32_t>(data_.scaffolds.size() - 1);
  }

  TsvReader table_;
  RunData& data_;
};

void readInserts(const std::string& file, std::string_view text, RunData& data) {
  TsvReader table(file, text);
  std::vector<std::string_view> fields;
  if (!table.next(fields) || fields.size() != 5 || fields[0] != "library") table.fail();
  std::map<std::string_view, LibraryData*> libraries;
  for (LibraryData& library : data.libraries) libraries[library.name] = &library;
  while (table.next(fields)) {
    if (fields.size() != 5) table.fail();
    const auto library = libraries.find(fields[0]);
    const auto* const name =
        std::find(run::kOrientationNames.begin(), run::kOrientationNames.end(), fields[1]);
    if (library == libraries.end() || name == run::kOrientationNames.end()) table.fail();
    const auto orientation = static_cast<std::size_t>(name - run::kOrientationNames.begin());
    library->second->inserts[orientation].push_back({table.number<uint64_t>(fields[2]),
                                                     table.number<uint64_t>(fields[3]),
                                                     table.number<uint64_t>(fields[4])});
  }
}

void readEvidence(const std::string& file, RunData& data) {
  data.evidence = run::Evidence::parse(textOfFile(file), file);
  const auto& names = data.evidence->libraries();
  const bool isOfRun =
      data.evidence->gaps() == data.gaps.size() &&
      std::equal(names.begin(), names.end(), data.libraries.begin(), data.libraries.end(),
                 [](const std::string& name, const LibraryData& one) { return name == one.name; });
  if (!isOfRun) throw Failure(Status::kFailed, file + " is not of the same run as gaps.tsv");
  for (std::size_t gap = 0; gap < data.gaps.size(); ++gap) {
    data.reach.push_back({data.evidence->reach(gap, run::Side::kFront),
                          data.evidence->reach(gap, run::Side::kBehind)});
  }
}

}  // namespace

std::string textOfFile(const std::string& file) {
  const run::Descriptor input(file, O_RDONLY);
  return run::readDescriptor(input.get(), file);
}

RunData readRun(const std::string& folder, std::string_view summary) {
  RunData data;
  try {
    data = factsOf(Parsed::parse(summary));
  } catch (const nlohmann::json::exception&) {
    throw Failure(Status::kFailed, folder + "/summary.json is not as velk-run writes it");
  }
  const std::string gaps = folder + "/gaps.tsv";
  GapTableReader(gaps, textOfFile(gaps), data).read();
  const std::string evidence = folder + "/evidence.tsv";
  if (!run::exists(evidence)) return data;  // of a run by an older version
  readEvidence(evidence, data);
  const std::string inserts = folder + "/inserts.tsv";
  readInserts(inserts, textOfFile(inserts), data);
  return data;
}

}  // namespace velk::report
