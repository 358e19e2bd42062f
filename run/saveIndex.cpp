// Writes a saved index.
#include "run/savedIndex.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kmer/machine.h"
#include "run/checksum.h"
#include "run/diskFile.h"
#include "run/wholeFile.h"

namespace velk::run {
namespace {

using saved::kParts;
using saved::Part;
using saved::SavedContig;
using saved::SavedScaffold;

template <class T>
std::string_view bytesOf(const T* values, std::size_t size) {
  return {reinterpret_cast<const char*>(values), size * sizeof(T)};
}

template <class T>
std::string_view bytesOf(const std::vector<T>& values) {
  return bytesOf(values.data(), values.size());
}

// What the parts of an index hold: as views of it, or of copies.
class Parts {
 public:
  explicit Parts(const ToSave& toSave) {
    addAssembly(toSave.assembly, toSave.index);
    set(Part::kPlaceholders, {bytesOf(toSave.placeholders)});
    set(Part::kNames, {names_});
    set(Part::kScaffolds, {bytesOf(scaffolds_)});
    set(Part::kContigs, {bytesOf(contigs_)});
    set(Part::kGapPlaceholders, {bytesOf(placeholders_)});
    auto next = static_cast<std::size_t>(Part::kText);
    SeedIndex::forEachKept(toSave.index, [&](const auto& array) {
      set(static_cast<Part>(next++), {bytesOf(array.begin(), array.size())});
    });
  }

  // The pieces of a part, one behind the other.
  const std::vector<std::string_view>& pieces(std::size_t part) const { return pieces_[part]; }

  saved::PartPlace place(std::size_t part) const {
    saved::PartPlace place{};
    Md5 md5;
    for (const std::string_view piece : pieces_[part]) {
      md5.add(piece);
      place.bytes += piece.size();
    }
    place.md5 = saved::digitsOf(md5.sum());
    return place;
  }

 private:
  void set(Part part, std::vector<std::string_view> pieces) {
    pieces_[static_cast<std::size_t>(part)] = std::move(pieces);
  }

  void addAssembly(const Assembly& assembly, const SeedIndex& index) {
    std::vector<std::size_t> firstContigs;
    for (std::size_t s = 0; s < assembly.scaffolds().size(); ++s) {
      const Scaffold& scaffold = assembly.scaffolds()[s];
      firstContigs.push_back(contigs_.size());
      names_.append(scaffold.name).push_back('\0');
      scaffolds_.push_back({scaffold.length,
                            scaffold.lastBase ? scaffold.lastBase->start : SavedScaffold::kNone,
                            scaffold.contigs.size()});
      for (std::size_t c = 0; c < scaffold.contigs.size(); ++c) addContig(assembly, s, c);
    }
    for (const TextContig& contig : index.text().contigs()) {
      contigs_[firstContigs[contig.scaffold] + contig.contig].hasNonAcgt = contig.hasNonAcgt;
    }
  }

  void addContig(const Assembly& assembly, std::size_t s, std::size_t c) {
    const ContigPlace& contigPlace = assembly.scaffolds()[s].contigs[c];
    const ContigInfo& info = assembly.model()[s].contigsInfo[c];
    SavedContig& contig = contigs_.emplace_back(SavedContig{
        contigPlace.start, contigPlace.end, info.frontGapNum, info.frontGapSize, 0, 0, 0});
    if (c > 0) {
      const Gap& gap = assembly.gaps()[assembly.gapInFront(s, c)];
      contig.unknown = gap.unknown;
      contig.placeholders = static_cast<uint32_t>(gap.placeholders.size());
      placeholders_.insert(placeholders_.end(), gap.placeholders.begin(), gap.placeholders.end());
    }
    pieces_[static_cast<std::size_t>(Part::kBases)].push_back(assembly.basesOf(s, c));
  }

  std::string names_;
  std::vector<SavedScaffold> scaffolds_;
  std::vector<SavedContig> contigs_;
  std::vector<uint64_t> placeholders_;
  std::array<std::vector<std::string_view>, kParts> pieces_;
};

std::string_view textOf(const saved::Header& header, std::size_t bytes) {
  return {reinterpret_cast<const char*>(&header), bytes};
}

// Places the parts, and completes the header.
void placeParts(saved::Header& header, const Parts& parts, int threads) {
  forEachInParallel(static_cast<std::size_t>(threads), kParts,
                    [&](std::size_t n) { header.parts[n] = parts.place(n); });
  header.bytes = saved::kPage;
  for (saved::PartPlace& place : header.parts) {
    place.offset = header.bytes;
    header.bytes += (place.bytes + saved::kPage - 1) / saved::kPage * saved::kPage;
  }
  header.md5 = saved::digitsOf(md5OfText(textOf(header, offsetof(saved::Header, md5))));
}

void writeParts(int descriptor, const std::string& name, const saved::Header& header,
                const Parts& parts) {
  constexpr std::size_t kBuffer = std::size_t{1} << 20;  // bytes; larger pieces go by themselves
  std::string buffer(textOf(header, sizeof header));
  uint64_t written = 0;
  const auto flush = [&] {
    writeDescriptor(descriptor, name, buffer);
    written += buffer.size();
    buffer.clear();
  };
  const auto fillPage = [&] {
    buffer.append((saved::kPage - (written + buffer.size()) % saved::kPage) % saved::kPage, '\0');
  };
  fillPage();
  for (std::size_t n = 0; n < kParts; ++n) {
    for (const std::string_view piece : parts.pieces(n)) {
      if (buffer.size() + piece.size() > kBuffer) flush();
      if (piece.size() > kBuffer) {
        writeDescriptor(descriptor, name, piece);
        written += piece.size();
      } else {
        buffer.append(piece);
      }
    }
    fillPage();
  }
  flush();
}

}  // namespace

saved::Md5Digits saved::digitsOf(const std::string& md5) {
  saved::Md5Digits digits{};
  std::copy_n(md5.begin(), digits.size(), digits.begin());
  return digits;
}

uint64_t saveIndex(const std::string& file, saved::Header header, const ToSave& toSave,
                   int threads) {
  const Parts parts(toSave);
  placeParts(header, parts, threads);
  writeWhole(file, [&](int descriptor, const std::string& name) {
    writeParts(descriptor, name, header, parts);
  });
  return header.bytes;
}

}  // namespace velk::run
