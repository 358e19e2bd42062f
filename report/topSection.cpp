#include <algorithm>

#include "report/sections.h"
#include "report/tally.h"
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
  html += tile("median", countText(tally.medianReads), "reads a gap", "the median");
  if (!data.reach.empty()) {
    html += tile("covered", countText(tally.covered), "gaps covered whole", "by exact reads");
  }
  if (data.evidence) {
    html += tile("few", countText(tally.few), "gaps with few reads",
                 "under a quarter of the predicted");
  }
  return html + "</div>" + warningsOf(data);
}

}  // namespace velk::report
