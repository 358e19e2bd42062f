// Packed k-mers and the hash set. Input: a byte for the k-mer length, one for the slots of the
// table, one for its load factor, then the letters.
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"
#include "tests/fuzz/fuzz.h"
#include "tests/kmer/packingModel.h"

namespace velk::fuzz {
namespace {

constexpr std::size_t kMostLetters = 160;

// The key of the k-mer at an offset, made letter by letter.
uint64_t plainKey(std::string_view letters, std::size_t offset) {
  return test::modelOfPacking(std::string(letters.substr(offset, static_cast<std::size_t>(Kmer))));
}

bool isBases(std::string_view letters) {
  return letters.find_first_not_of("ACGTacgt") == std::string_view::npos;
}

std::string upperCase(std::string_view bases) {
  std::string upper(bases);
  for (char& base : upper) base = static_cast<char>(base & ~32);
  return upper;
}

std::string otherStrand(std::string_view bases) {
  const std::string upper = upperCase(bases);
  std::string reversed(upper.rbegin(), upper.rend());
  for (char& base : reversed) base = "TGCA"[std::string_view("ACGT").find(base)];
  return reversed;
}

// What the bits of one k-mer of bases alone say of it.
void compareBits(std::string_view kmer, uint64_t key) {
  if (Kmer < 1 || Kmer > DATA_LEN || !isBases(kmer)) return;
  const uint64_t reversed = test::modelOfPacking(otherStrand(kmer));
  require(reversedKey(key, Kmer) == reversed, "another reverse complement of a key");
  require(Kmer2Seq(key) == upperCase(kmer), "a key does not give its k-mer back");
}

void compareKeys(std::string_view letters) {
  const std::size_t windows = letters.size() - static_cast<std::size_t>(Kmer) + 1;
  for (std::size_t offset = 0; offset < windows; ++offset) {
    const uint64_t key = plainKey(letters, offset);
    uint64_t packed = 0;
    Seq2Kmer(packed, letters.substr(offset, static_cast<std::size_t>(Kmer)));
    require(packed == key, "Seq2Kmer packs another key");
    compareBits(letters.substr(offset, static_cast<std::size_t>(Kmer)), key);
  }
}

void comparePacked(std::string_view letters) {
  PackedBases packed;
  require(packed.fill(letters) == isBases(letters), "other letters are packed, or bases are not");
  if (!isBases(letters)) return;
  const std::size_t windows = letters.size() - static_cast<std::size_t>(Kmer) + 1;
  // of a k-mer longer than a word, the last bases
  const int bases = std::min(Kmer, DATA_LEN);
  for (std::size_t offset = 0; bases != 0 && offset < windows; ++offset) {
    const std::size_t at = offset + static_cast<std::size_t>(Kmer - bases);
    require(packed.at(at, bases) == plainKey(letters, offset), "another key of packed bases");
  }
}

// Every k-mer into a table: it must hold what a map holds, at any size and after any growth.
void compareTable(std::string_view letters, uint64_t slots, float load) {
  struct Place {
    std::size_t first;
    bool isUnique;
  };
  std::map<uint64_t, Place> model;
  HashSet* const set = init_hashset(slots, load);
  const std::size_t windows = letters.size() - static_cast<std::size_t>(Kmer) + 1;
  for (std::size_t offset = 0; offset < windows; ++offset) {
    Entity entity{};
    entity.bitSeq = plainKey(letters, offset);
    entity.startPos = offset & 0xFFFFFF;
    entity.unique = 1;
    add_hashset(set, entity);
    const auto [place, isNew] = model.emplace(entity.bitSeq, Place{offset, true});
    if (!isNew) place->second.isUnique = false;
  }
  require(set->count == model.size() && set->count <= set->max && set->max < set->size,
          "another number of k-mers in the table");
  Entity asked{};
  for (const auto& [key, place] : model) {
    asked.bitSeq = key;
    const uint64_t slot = get_hashset(set, asked);
    require(slot != set->size, "a k-mer is lost");
    require(set->array[slot].startPos == place.first &&
                (set->array[slot].unique == 1) == place.isUnique,
            "a k-mer has another place");
    asked.bitSeq = ~key;
    require(exists_hashset(set, asked) == model.contains(~key), "a k-mer that was never added");
  }
  free_hash(set);
}

}  // namespace

void tryInput(Input input) {
  Kmer = input.next();
  const auto slots = static_cast<uint64_t>(input.next());
  const int load = input.next();
  const std::string_view letters = input.rest().substr(0, kMostLetters);
  if (letters.size() < static_cast<std::size_t>(Kmer)) return;
  Said said;
  compareKeys(letters);
  comparePacked(letters);
  compareTable(letters, slots, static_cast<float>(load) / 64.0F);
}

}  // namespace velk::fuzz
