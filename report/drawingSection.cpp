// The section of the page with drawings of gaps and their reads.
#include <algorithm>
#include <numeric>

#include "report/drawing.h"
#include "report/figures.h"
#include "report/page.h"
#include "report/svg.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

constexpr std::size_t kMostRich = 80;
constexpr std::size_t kMostPoor = 80;
constexpr std::size_t kMostEmpty = 40;
constexpr std::size_t kUnfolded = 4;  // drawings of a group that are seen at once

std::string readsText(const Findings& findings, std::size_t number) {
  const uint64_t reads = findings.gaps[number].belonging;
  if (reads == 0) return "no reads";
  return countText(reads) + (reads == 1 ? " read: " : " reads: ") +
         countText(findings.data.count(number, ReadKind::kExact)) + " exact, " +
         countText(findings.data.count(number, ReadKind::kEstimate)) + " estimates";
}

std::string captionOf(const Findings& findings, std::size_t number, const GapReads& reads) {
  const GapData& gap = findings.data.gaps[number];
  const Judgement& judged = findings.gaps[number];
  std::string html = "<figcaption><b>Gap " + std::to_string(gap.number) + "</b><span>" +
                     named(findings.data.scaffoldOf(gap), 60) + ", " + placeText(gap) +
                     "</span><span>" + readsText(findings, number) + "</span>";
  if (judged.reason != Reason::kEnough && findings.data.evidence) html += reasonChip(judged);
  if (reads.reads.size() > kDrawnReads) {
    html += "<span>" + countText(kDrawnReads) + " of " + countText(reads.reads.size()) +
            " records drawn</span>";
  }
  return html + "</figcaption>";
}

std::string keyOf(const RunData& data) {
  std::string html = "<ul class=\"keys\">";
  for (std::size_t l = 0; l < std::min<std::size_t>(data.libraries.size(), 12); ++l) {
    html += "<li><i class=\"" + libraryClass(l) + "\"></i>" + named(data.libraries[l].name, 40) +
            "</li>";
  }
  const auto sample = [](const char* kind, const char* name) {
    Svg svg(30, 8, name);
    svg.path("M1 4h28", std::string("read lib0 ") + kind);
    return "<li style=\"display:flex;align-items:center;gap:6px\"><span style=\"width:30px\">" +
           std::move(svg).finish() + "</span>" + name + "</li>";
  };
  html += sample("exact", "exact") + sample("estimate", "estimate") +
          sample("contained", "contained in a contig");
  if (!data.isOfVelk) html += sample("anchor", "anchor");
  return html + "</ul>";
}

// Draws gaps one after the other, as long as there is room.
class Gallery {
 public:
  Gallery(const Findings& findings, GapReadSource& reads, std::size_t mostBytes)
      : findings_(findings), reads_(reads), left_(mostBytes) {}

  std::string group(const char* name, const std::vector<std::size_t>& gaps) {
    std::string shown;
    std::string folded;
    std::size_t count = 0;
    for (const std::size_t gap : gaps) {
      const std::string figure = figureOf(gap);
      if (figure.size() > left_) break;
      left_ -= figure.size();
      drawn_.insert(gap);
      (count < kUnfolded ? shown : folded) += figure;
      ++count;
    }
    if (count == 0) return "";
    std::string html = std::string("<h3>") + name + "</h3>" + shown;
    if (count > kUnfolded) {
      html += "<details class=\"more\"><summary>" + countText(count - kUnfolded) +
              " more</summary>" + folded + "</details>";
    }
    return html;
  }

  const std::set<std::size_t>& drawn() const { return drawn_; }

 private:
  std::string figureOf(std::size_t gap) {
    const GapReads reads = reads_.readsOf(gap);
    return "<figure class=\"panel\" id=\"gap-" + std::to_string(findings_.data.gaps[gap].number) +
           "\">" + captionOf(findings_, gap, reads) +
           drawGap(findings_.data, gap, reads, Setting::kInPage) + "</figure>\n";
  }

  const Findings& findings_;
  GapReadSource& reads_;
  std::size_t left_;  // bytes
  std::set<std::size_t> drawn_;
};

}  // namespace

std::string reasonChip(const Judgement& judged) {
  return "<span class=\"chip\"><i class=\"" + reasonClass(judged.reason) + "\"></i>" +
         nameOf(judged.reason) + (judged.figure.empty() ? "" : ", " + judged.figure) + "</span>";
}

std::string drawingSection(const Findings& findings, GapReadSource& reads, std::size_t mostBytes,
                           std::set<std::size_t>& drawn) {
  std::vector<std::size_t> withReads;
  std::vector<std::size_t> empty;
  for (std::size_t gap = 0; gap < findings.gaps.size(); ++gap) {
    (findings.gaps[gap].hasReads() ? withReads : empty).push_back(gap);
  }
  std::stable_sort(withReads.begin(), withReads.end(), [&](std::size_t one, std::size_t other) {
    return findings.gaps[one].belonging > findings.gaps[other].belonging;
  });
  const std::size_t rich = std::min(kMostRich, withReads.size());
  const std::size_t poor = std::min(kMostPoor, withReads.size() - rich);
  const auto at = [&](std::size_t n) { return withReads.begin() + static_cast<std::ptrdiff_t>(n); };
  std::vector<std::size_t> richest(at(0), at(rich));
  std::vector<std::size_t> poorest(withReads.rbegin(),
                                   withReads.rbegin() + static_cast<std::ptrdiff_t>(poor));
  empty.resize(std::min(kMostEmpty, empty.size()));
  Gallery gallery(findings, reads, mostBytes);
  std::string html =
      "<section id=\"drawings\"><h2>Gaps, drawn</h2><p class=\"hint\">Contigs on either side, and "
      "every read at its place";
  if (!findings.data.isOfVelk) html += "; mates are joined";
  html +=
      ". Above: how deep exact reads lie (full) and estimates on top of them (faint). "
      "<code>velk-report --gap N</code> draws any other gap.";
  if (std::max({richest.size(), poorest.size(), empty.size()}) > kUnfolded) {
    html += "<span class=\"paper\"> On paper: the first " + std::to_string(kUnfolded) +
            " of each kind.</span>";
  }
  html += "</p>" + keyOf(findings.data);
  html += gallery.group("Most reads", richest);
  html += gallery.group("Fewest reads", poorest);
  html += gallery.group("Without reads", empty);
  drawn = gallery.drawn();
  return html + "</section>";
}

}  // namespace velk::report
