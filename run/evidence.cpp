#include "run/evidence.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <limits>
#include <utility>

#include "run/failure.h"

namespace velk::run {
namespace {

// The columns of a gap; behind them stand those of each library.
enum Column : uint8_t {
  kFlankReads,
  kReach,                 // of the side in front; then the one behind
  kKmers = kReach + 2,    // likewise
  kRepeats = kKmers + 2,  // likewise
  kLibraries = kRepeats + 2
};
constexpr std::array kNames{"flank_reads",  "exact_before",    "exact_behind",   "kmers_before",
                            "kmers_behind", "repeated_before", "repeated_behind"};
static_assert(kNames.size() == kLibraries);

constexpr std::array kRefusals{Refusal::kSmallGap, Refusal::kShortOverlap, Refusal::kUnlike};
constexpr std::array kRefusalNames{":small_gap", ":short_overlap", ":unlike"};
static_assert(kRefusalNames.size() == kRefusals.size());

uint64_t columnOf(std::size_t library, Refusal why) {
  const auto* const place = std::find(kRefusals.begin(), kRefusals.end(), why);
  assert(place != kRefusals.end());
  return kLibraries + library * kRefusals.size() +
         static_cast<std::size_t>(place - kRefusals.begin());
}

uint64_t columnOf(Column first, Side side) {
  return first + static_cast<uint64_t>(side);
}

// Whether the column has what is true of each share, and not a count.
bool isLargest(uint64_t column) {
  return column >= kReach && column < kLibraries;
}

void addOne(uint32_t& number) {
  __atomic_fetch_add(&number, 1U, __ATOMIC_RELAXED);
}

uint32_t cut(uint64_t number) {
  return static_cast<uint32_t>(std::min<uint64_t>(number, std::numeric_limits<uint32_t>::max()));
}

std::string_view takeUntil(std::string_view& text, char mark) {
  const std::size_t end = text.find(mark);
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(std::min(text.size(), taken.size() + 1));
  return taken;
}

}  // namespace

Evidence::Evidence(uint64_t gaps, std::vector<std::string> libraries)
    : gaps_(gaps), libraries_(std::move(libraries)), numbers_(gaps * columns()) {}

uint64_t Evidence::columns() const {
  return kLibraries + libraries_.size() * kRefusals.size();
}

void Evidence::addRefused(uint64_t gap, uint32_t library, Refusal why) {
  addOne(at(gap, columnOf(library, why)));
}

void Evidence::addFlankRead(uint64_t gap) {
  addOne(at(gap, kFlankReads));
}

void Evidence::addReach(uint64_t gap, Side side, uint64_t bases) {
  uint32_t& longest = at(gap, columnOf(kReach, side));
  const uint32_t wanted = cut(bases);
  uint32_t seen = __atomic_load_n(&longest, __ATOMIC_RELAXED);
  while (seen < wanted && !__atomic_compare_exchange_n(&longest, &seen, wanted, true,
                                                       __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
  }
}

void Evidence::setKmers(uint64_t gap, Side side, uint64_t kmers, uint64_t repeated) {
  at(gap, columnOf(kKmers, side)) = cut(kmers);
  at(gap, columnOf(kRepeats, side)) = cut(repeated);
}

uint32_t Evidence::refused(uint64_t gap, std::size_t library, Refusal why) const {
  return at(gap, columnOf(library, why));
}

uint32_t Evidence::flankReads(uint64_t gap) const {
  return at(gap, kFlankReads);
}

uint32_t Evidence::reach(uint64_t gap, Side side) const {
  return at(gap, columnOf(kReach, side));
}

uint32_t Evidence::kmers(uint64_t gap, Side side) const {
  return at(gap, columnOf(kKmers, side));
}

uint32_t Evidence::repeatedKmers(uint64_t gap, Side side) const {
  return at(gap, columnOf(kRepeats, side));
}

Evidence& Evidence::operator+=(const Evidence& other) {
  assert(gaps_ == other.gaps_ && libraries_ == other.libraries_);
  for (uint64_t gap = 0; gap < gaps_; ++gap) {
    for (uint64_t column = 0; column < columns(); ++column) {
      uint32_t& number = at(gap, column);
      const uint32_t more = other.at(gap, column);
      number = isLargest(column) ? std::max(number, more) : cut(uint64_t{number} + more);
    }
  }
  return *this;
}

std::string Evidence::text() const {
  std::string text = "gap";
  for (const char* name : kNames) text.append("\t").append(name);
  for (const std::string& library : libraries_) {
    for (const char* name : kRefusalNames) text.append("\t").append(library).append(name);
  }
  text += "\n";
  for (uint64_t gap = 0; gap < gaps_; ++gap) {
    text += std::to_string(gap);
    for (uint64_t column = 0; column < columns(); ++column) {
      text.append("\t").append(std::to_string(at(gap, column)));
    }
    text += "\n";
  }
  return text;
}

Evidence Evidence::parse(std::string_view text, const std::string& file) {
  const auto fail = [&] {
    throw Failure(Status::kFailed, file + " is no table of evidence, or is damaged");
  };
  std::string_view names = takeUntil(text, '\n');
  if (takeUntil(names, '\t') != "gap") fail();
  for (const char* name : kNames) {
    if (takeUntil(names, '\t') != name) fail();
  }
  std::vector<std::string> ofLibraries;
  while (!names.empty()) {
    std::string_view library;
    for (const std::string_view name : kRefusalNames) {
      library = takeUntil(names, '\t');
      if (!library.ends_with(name)) fail();
      library.remove_suffix(name.size());
    }
    ofLibraries.emplace_back(library);
  }
  Evidence evidence(static_cast<uint64_t>(std::count(text.begin(), text.end(), '\n')),
                    std::move(ofLibraries));
  for (uint64_t gap = 0; gap < evidence.gaps_; ++gap) {
    std::string_view line = takeUntil(text, '\n');
    if (takeUntil(line, '\t') != std::to_string(gap)) fail();
    for (uint64_t column = 0; column < evidence.columns(); ++column) {
      const std::string_view number = takeUntil(line, '\t');
      const char* const end = number.data() + number.size();
      const auto result = std::from_chars(number.data(), end, evidence.at(gap, column));
      if (result.ec != std::errc() || result.ptr != end) fail();
    }
    if (!line.empty()) fail();
  }
  if (!text.empty()) fail();
  return evidence;
}

}  // namespace velk::run
