// Checks of the read files: whether velk can read them, and which of their reads it would skip.
#include <algorithm>
#include <cstdio>

#include "check/readFile.h"
#include "check/readPass.h"
#include "check/survey.h"
#include "driver/velk.h"
#include "streaming/library.h"

namespace velk::check {
namespace {

constexpr double kMany = 0.1;  // share of the reads from which on a loss is more than a note

// Reports what can be said of a file from outside. Returns whether its lines can be looked at.
bool checkFromOutside(Survey& survey, const std::string& file, uint64_t line, bool isSecond,
                      bool readAsGzip) {
  Findings& findings = survey.findings;
  const Place place{file};
  if (file.size() < kShortestReadFileName && !isSecond) {
    findings.add("name-short", {lib_file, line}, "the read file name \"" + file + "\"");
    return false;
  }
  const FileFacts facts = factsOf(file);
  if (!facts.canOpen) {
    findings.add(readAsGzip ? Id("gzip-missing") : Id("reads-missing"), place, facts.reason);
    return false;
  }
  if (!facts.isRegular) {
    findings.add("reads-not-regular", place, "no regular file");
    return false;
  }
  if (facts.size == 0) {
    findings.add("reads-empty", place, "the file has no bytes");
    return false;
  }
  if (facts.packing == Packing::kOther) {
    findings.add("compression-unknown", place, "compressed with " + facts.method);
    return false;
  }
  if (facts.packing == Packing::kGzip && !readAsGzip) {
    findings.add(isSecond && isGzipName(file) ? Id("mate-compression") : Id("gzip-plain-name"),
                 place, "the file is compressed with gzip");
    return false;
  }
  if (facts.packing == Packing::kPlain && isGzipName(file)) {
    findings.add("plain-gzip-name", place, "the file is not compressed");
  }
  return true;
}

bool checkFormat(Survey& survey, const RecordReader& reader, const std::string& file) {
  if (reader.letter() == '>' || reader.letter() == '@') return true;
  if (!reader.lines().damage().empty()) {
    survey.findings.add("gzip-damaged", {file}, reader.lines().damage());
  } else if (reader.ended()) {
    survey.findings.add("reads-empty", {file}, "nothing in the compressed file");
  } else {
    survey.findings.add("format-unknown", {file, 1}, "the file begins neither with > nor with @");
  }
  return false;
}

void reportReader(Survey& survey, const RecordReader& reader, const std::string& file) {
  const auto addFault = [&](const std::optional<Fault>& fault) {
    if (fault) survey.findings.add(fault->id, {file, 0, fault->record}, fault->text);
  };
  addFault(reader.fault());
  addFault(reader.longLine());
  const std::string& damage = reader.lines().damage();
  if (!damage.empty()) survey.findings.add("gzip-damaged", {file}, damage);
}

void reportStats(Survey& survey, const ReadInput& input) {
  const ReadStats& stats = input.stats;
  Findings& findings = survey.findings;
  const auto share = [&](uint64_t count) {
    return shareText(count, stats.reads) + " of the reads looked at";
  };
  const Place place{input.fileA};
  if (stats.withN > 0) {
    findings.add(stats.share(stats.withN) < kMany ? Id("reads-with-n") : Id("many-reads-with-n"),
                 place, share(stats.withN));
  }
  if (stats.shorterThanK > 0) {
    findings.add(
        stats.share(stats.shorterThanK) < kMany ? Id("reads-short") : Id("many-reads-short"), place,
        share(stats.shorterThanK));
  }
  if (stats.withLower > 0) {
    findings.add("reads-lower-case", {input.fileA, 0, stats.firstWithLower},
                 share(stats.withLower));
  }
  if (stats.withReturn > 0) {
    findings.add("reads-carriage-return", {input.fileA, 0, stats.firstWithReturn},
                 share(stats.withReturn));
  }
  if (input.isPaired && stats.longerThanR > 0) {
    findings.add(
        "reads-longer", place,
        share(stats.longerThanR) + ", the longest has " + std::to_string(stats.longest) + " bases");
  }
}

void reportPass(Survey& survey, const ReadInput& input, const PassResult& pass) {
  if (pass.nameRecord != 0) {
    survey.findings.add("mate-names", {input.fileA, 0, pass.nameRecord},
                        "\"" + pass.nameA + "\" and \"" + pass.nameB + "\"");
  }
  if (pass.surplus == Surplus::kNone) return;
  const bool isOneFile = input.fileB.empty();
  const std::string& longer = pass.surplus == Surplus::kFirst ? input.fileA : input.fileB;
  survey.findings.add("mate-counts", {longer, 0, pass.pairs + 1},
                      isOneFile
                          ? std::string("the last record has no mate")
                          : "the other file ends after " + std::to_string(pass.pairs) + " records");
}

void checkInput(Survey& survey, ReadInput& input) {
  const bool isGzip = isGzipName(input.fileA);
  bool canRead = checkFromOutside(survey, input.fileA, input.lineA, false, isGzip);
  if (!input.fileB.empty()) {
    canRead &= checkFromOutside(survey, input.fileB, input.lineB, true, isGzip);
  }
  if (!canRead) return;
  RecordReader first(input.fileA, isGzip);
  if (!checkFormat(survey, first, input.fileA)) return;
  PassResult pass;
  if (input.fileB.empty()) {
    pass = passRecords(survey, input, first, nullptr);
  } else {
    RecordReader second(input.fileB, isGzip);
    if (!checkFormat(survey, second, input.fileB)) return;
    if (first.letter() != second.letter()) {
      survey.findings.add("format-differs", {input.fileB},
                          "FASTA and FASTQ are recognised by the first character");
      return;
    }
    pass = passRecords(survey, input, first, &second);
    reportReader(survey, second, input.fileB);
    if (isGzip && second.letter() == '>' && second.lacksNewline()) {
      survey.findings.add("gzip-no-newline", {input.fileB}, "the last line has no newline");
    }
  }
  reportReader(survey, first, input.fileA);
  if (isGzip && first.letter() == '>' && first.lacksNewline()) {
    survey.findings.add("gzip-no-newline", {input.fileA}, "the last line has no newline");
  }
  input.isReadable = input.stats.reads > 0;
  input.isFasta = first.letter() == '>';
  reportPass(survey, input, pass);
  reportStats(survey, input);
}

}  // namespace

std::string shareText(uint64_t count, uint64_t of) {
  const double percent = of == 0 ? 0 : 100.0 * static_cast<double>(count) / static_cast<double>(of);
  char text[64];
  std::snprintf(text, sizeof(text), "%llu of %llu (%.*f %%)",
                static_cast<unsigned long long>(count), static_cast<unsigned long long>(of),
                percent < 1 ? 2 : 1, percent);
  return text;
}

void checkReads(Survey& survey) {
  for (ReadInput& input : survey.inputs) checkInput(survey, input);
}

}  // namespace velk::check
