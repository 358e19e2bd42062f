#include "report/page.h"

#include <algorithm>

#include "report/html.h"
#include "run/terminal.h"

namespace velk::report {
using run::countText;

const std::string_view kBrand =
    "<div class=\"brand\"><svg viewBox=\"0 0 46 16\" aria-hidden=\"true\"><rect class=\"solid\" "
    "y=\"5\" width=\"14\" height=\"6\" rx=\"2\"/><path class=\"dash\" d=\"M16.5 8h13\"/><rect "
    "class=\"solid\" x=\"32\" y=\"5\" width=\"14\" height=\"6\" rx=\"2\"/></svg>velk report</div>";

std::string pageHead(const std::string& title) {
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
      "'unsafe-inline'; script-src 'unsafe-inline'; base-uri 'none'; form-action 'none'\">\n"
      "<title>";
  html += escaped(title, 160) + ": velk report</title>\n<style>\n";
  return html.append(drawingStyle()).append(pageStyle()).append("</style>\n</head>\n");
}

std::string pageEnd() {
  return "</main>\n<footer>Made by velk-report " VELK_VERSION
         ". More on the figures: doc/report.md.</footer>\n<script>\n" +
         std::string(pageScript()) + "</script>\n</body>\n</html>\n";
}

namespace {

std::string madeBy(const RunData& data) {
  if (data.isOfVelk) return " &middot; velk";
  return " &middot; k = " + std::to_string(data.settings.kmer) + " &middot; velk-run " +
         escaped(data.version, 20);
}

std::string headerOf(const RunData& data, bool hasDrawings) {
  const std::string& path = data.assembly.name;
  const std::string file = path.substr(path.rfind('/') + 1);
  const auto counted = [](uint64_t number, const char* what) {
    return countText(number) + " " + what + (number == 1 ? "" : "s");
  };
  std::string html = "<header><div>" + std::string(kBrand) + "<h1>" + named(data.sample, 100) +
                     "</h1><p class=\"about\">" + named(file, 120) + " &middot; " +
                     counted(data.assembly.scaffolds, "scaffold") + ", " +
                     counted(data.assembly.bases, "base") + ", " +
                     counted(data.assembly.contigs, "contig") + madeBy(data) +
                     "</p><nav><a href=\"#libraries\">Libraries</a><a href=\"#gaps\">Gaps</a><a "
                     "href=\"#table\">Gap by gap</a>";
  if (hasDrawings) html += "<a href=\"#drawings\">Drawings</a>";
  return html + "<a href=\"#words\">Words</a></nav></div></header>\n";
}

std::string word(const char* name, const char* meaning) {
  return std::string("<dt>") + name + "</dt><dd>" + meaning + "</dd>";
}

std::string wordSection(const RunData& data) {
  std::string html = "<section id=\"words\"><h2>Words</h2><dl>";
  html += word("Reads of a gap", "Exact ones and estimates: those that belong in it.");
  html += word("Exact", "The read agrees with a contig that it overlaps, so its place is known.");
  html += word("Estimate",
               "The insert size alone says where the read lies; no contig speaks for or against.");
  html += word("Contained",
               "A contig near the read's place has all of its bases, so it does not belong in the "
               "gap.");
  if (!data.isOfVelk) {
    html += word("Anchor", "The read of a pair that lies on a contig, and so leads to its mate.");
    html += word("By pairs",
                 "The gap's length as pairs imply it that have a read on either side of it; a dot "
                 "where there are fewer than five.");
  }
  if (data.evidence) {
    html += word("Predicted",
                 "Reads that the libraries' depth and reach give a gap of this length between "
                 "contigs like these.");
    html += word("Flanks",
                 "Reads within 500 bases of the gap, as a multiple of the median of all gaps.");
  }
  html += word("Covered",
               "The part of the gap that exact reads cover from either side; stronger in colour "
               "where those of both sides do.");
  return html + "</dl></section>\n";
}

}  // namespace

std::string makePage(const Findings& findings, GapReadSource* reads) {
  std::string html = pageHead(findings.data.sample);
  html += "<body>\n" + headerOf(findings.data, reads != nullptr) + "<main>\n";
  html += topSection(findings) + "\n" + librarySection(findings) + "\n";
  html += gapSection(findings) + "\n";
  const std::string end = wordSection(findings.data) + pageEnd();
  std::set<std::size_t> drawn;
  std::string drawings;
  if (reads != nullptr) {
    constexpr std::size_t kOfSection =
        20'000;  // all of it that is no drawing, and what leads there
    const std::size_t taken =
        html.size() + tableSection(findings, {}).size() + end.size() + kOfSection;
    drawings =
        drawingSection(findings, *reads, kMostBytes - std::min(kMostBytes, taken), drawn) + "\n";
  }
  return html + tableSection(findings, drawn) + "\n" + drawings + end;
}

}  // namespace velk::report
