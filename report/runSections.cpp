// The sections of the page about the run as a whole, its inputs and libraries.
#include <algorithm>
#include <cmath>

#include "report/figures.h"
#include "report/page.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

double shareOf(uint64_t part, uint64_t whole) {
  return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

std::string tile(const char* id, const std::string& figure, const char* what,
                 const std::string& more) {
  return std::string("<div class=\"tile\" id=\"tile-") + id + "\"><b>" + figure + "</b><span>" +
         what + "</span><small>" + more + "</small></div>";
}

// "Of 5 reads searched, 2 were".
std::string foundText(const RunData& data) {
  const std::string found = countText(data.readsFound);
  if (data.isOfVelk) return found + (data.readsFound == 1 ? " read was" : " reads were");
  return "Of " + countText(data.readsSearched) + " reads searched, " + found + " were";
}

std::string warningsOf(const RunData& data) {
  constexpr std::size_t kMost = 50;
  if (data.warnings.empty()) return "";
  std::string html = "<ul class=\"warnings\">";
  for (std::size_t n = 0; n < std::min(kMost, data.warnings.size()); ++n) {
    html += "<li>" + named(data.warnings[n], 400) + "</li>";
  }
  if (data.warnings.size() > kMost) {
    html += "<li>" + countText(data.warnings.size() - kMost) + " more in summary.json</li>";
  }
  return html + "</ul>";
}

}  // namespace

std::string topSection(const Findings& findings) {
  const RunData& data = findings.data;
  const Tally tally = tallyOf(findings);
  const uint64_t gaps = data.gaps.size();
  std::string html = "<p class=\"lead\">" + foundText(data) + " found at gaps; " +
                     countText(tally.withReads) + " of " + countText(gaps) +
                     " gaps have reads.</p><div class=\"tiles\">";
  html += tile("gaps", countText(tally.withReads), "gaps with reads",
               "of " + countText(gaps) + ", " + percentText(shareOf(tally.withReads, gaps)));
  html +=
      tile("found", countText(data.readsFound), "reads found",
           data.isOfVelk ? "at all gaps"
                         : percentText(shareOf(data.readsFound, data.readsSearched)) + " of all");
  html += tile("exact", percentText(shareOf(tally.exact, tally.exact + tally.estimates)),
               "of places are exact",
               countText(tally.exact) + " of " + countText(tally.exact + tally.estimates));
  html += tile("median", countText(tally.medianReads), "reads per gap", "the median");
  if (!data.reach.empty()) {
    html += tile("covered", countText(tally.covered), "gaps covered whole", "by exact reads");
  }
  if (data.evidence) {
    html += tile("few", countText(tally.few), "gaps with few reads",
                 "under a quarter of the predicted");
  }
  return html + "</div>" + warningsOf(data);
}

namespace {

constexpr std::size_t kMostLibraries = 40;

std::string fact(const char* name, const std::string& value) {
  return std::string("<dt>") + name + "</dt><dd>" + value + "</dd>";
}

std::string rounded(double number) {
  return countText(static_cast<uint64_t>(std::llround(number)));
}

uint64_t atGaps(const RunData& data, std::size_t library, ReadKind kind) {
  uint64_t sum = 0;
  for (std::size_t gap = 0; gap < data.gaps.size(); ++gap) sum += data.count(gap, library, kind);
  return sum;
}

// Of velk's own files little is known but what was found.
std::string factsOf(const RunData& data, const LibraryData& library) {
  std::string html = "<dl class=\"facts\">";
  if (data.isOfVelk) {
    return html + fact("Reads found", countText(library.readsFound)) + "</dl>";
  }
  if (library.arePairs) {
    html += fact("Insert size", rounded(library.insert) + " &plusmn; " + rounded(library.spread) +
                                    " bases, " + escaped(library.insertSource));
    html += fact("Orientation",
                 escaped(library.orientation) + ", " + escaped(library.orientationSource));
  }
  html += fact("Reads searched", countText(library.readsSearched) + " of " +
                                     rounded(library.readLength()) + " bases on average");
  const uint64_t records = library.arePairs ? library.readsSearched / 2 : library.readsSearched;
  const auto ofAll = [&](uint64_t part) {
    const double all = static_cast<double>(std::max<uint64_t>(1, records));
    return countText(part) + " (" + percentText(static_cast<double>(part) / all) + ")";
  };
  if (library.onContigs > 0) {
    html +=
        fact(library.arePairs ? "Pairs on contigs" : "Reads on contigs", ofAll(library.onContigs));
  }
  html += fact(library.arePairs ? "Pairs skipped: with N" : "Reads skipped: with N",
               ofAll(library.withN));
  html += fact(library.arePairs ? "Pairs skipped: too short" : "Reads skipped: too short",
               ofAll(library.tooShort));
  return html + "</dl>";
}

std::string panelOf(const RunData& data, std::size_t number) {
  const LibraryData& library = data.libraries[number];
  const std::string colour = libraryClass(number);
  const bool isAlone = data.libraries.size() == 1;
  std::string html = std::string("<div class=\"panel library") + (isAlone ? " alone" : "") +
                     "\"><div><h3>" + named(library.name, 80) + "</h3><p class=\"hint\">" +
                     escaped(library.kind) + "</p>";
  if (library.arePairs && !data.isOfVelk) html += plotInserts(library, number);
  html += "</div><div>" +
          stackedBar({{colour, "exact", atGaps(data, number, ReadKind::kExact)},
                      {colour + " estimate", "estimate", atGaps(data, number, ReadKind::kEstimate)},
                      {"contained", "contained", atGaps(data, number, ReadKind::kContained)}});
  return html + factsOf(data, library) + "</div></div>";
}

}  // namespace

std::string stackedBar(const std::vector<BarPart>& parts) {
  uint64_t sum = 0;
  for (const BarPart& part : parts) sum += part.number;
  if (sum == 0) return "<p class=\"hint\">No reads were found.</p>";
  std::string bar = "<div class=\"bar\" aria-hidden=\"true\">";
  std::string keys = "<ul class=\"keys\">";
  for (const BarPart& part : parts) {
    if (part.number == 0) continue;
    const double share = static_cast<double>(part.number) / static_cast<double>(sum);
    bar +=
        "<i class=\"" + part.classes + "\" style=\"flex:" + std::to_string(part.number) + "\"></i>";
    keys += "<li><i class=\"" + part.classes + "\"></i><b>" + countText(part.number) + "</b> " +
            part.name + ", " + percentText(share) + "</li>";
  }
  return bar + "</div>" + keys + "</ul>";
}

std::string librarySection(const Findings& findings) {
  const RunData& data = findings.data;
  std::string html = "<section id=\"libraries\"><h2>Libraries</h2><p class=\"hint\">";
  html +=
      data.isOfVelk
          ? "Libraries are distinguished by the insert sizes that were given. Places are compared "
            "with the contigs as velk-run does, which takes a tenth of that for the spread."
          : "How long the fragments are, and what was found at gaps. The lengths are of those "
            "among the first pairs that lie on one contig; grey bars are pairs of another "
            "orientation.";
  html += "</p><div class=\"panels\">";
  for (std::size_t n = 0; n < std::min(kMostLibraries, data.libraries.size()); ++n) {
    html += panelOf(data, n);
  }
  html += "</div>";
  if (data.libraries.size() > kMostLibraries) {
    html += "<p class=\"hint\">" + countText(data.libraries.size() - kMostLibraries) +
            " more libraries are in summary.json.</p>";
  }
  return html + "</section>";
}

}  // namespace velk::report
