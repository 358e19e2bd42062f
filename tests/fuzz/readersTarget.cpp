// The readers. Input: a byte for the format (even FASTA, odd FASTQ), one for the length of a batch,
// one for the length of a system read, for gzip files three more (see GzipMaker; the first says,
// too, whether they are inflated ahead), then the text; of mate files the second one stands behind
// a form feed. VELK_FUZZ_GZIP and VELK_FUZZ_FILES (1, 2, or 0 for both mates in one file) choose
// the readers.
#include <sys/types.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "driver/velk.h"
#include "streaming/readBuffer.h"
#include "streaming/readers.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/readModel.h"

namespace velk::fuzz {
namespace {

std::size_t longestRead = 0;  // bytes that the system gives at once; 0: as many as asked for
ReadBatches* handedOver = nullptr;

}  // namespace
}  // namespace velk::fuzz

// The linker puts these in the places of read() and velk::sendSignal().
extern "C" ssize_t __real_read(int descriptor, void* bytes, std::size_t count);
extern "C" ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count);
extern "C" void __wrap__ZN4velk10sendSignalEi(int sig);

ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count) {
  const std::size_t most = velk::fuzz::longestRead;
  return __real_read(descriptor, bytes, most == 0 ? count : std::min(count, most));
}

void __wrap__ZN4velk10sendSignalEi(int sig) {
  using namespace velk;
  fuzz::require(sig == 1 && bufferNum >= 1 && bufferNum <= batchLimit, "an odd hand-off");
  fuzz::ReadBatch& batch = fuzz::handedOver->emplace_back();
  batch.a.assign(readsA, readsA + bufferNum);
  if (readsB != nullptr) batch.b.assign(readsB, readsB + bufferNum);
}

namespace velk::fuzz {
namespace {

constexpr bool kGzip = VELK_FUZZ_GZIP;
constexpr int kFiles = VELK_FUZZ_FILES;

ReadShape shapeOf(bool isFastq) {
  if (kFiles == 0) return isFastq ? ReadShape{kGzip, 1, 8, 6} : ReadShape{kGzip, 1, 4, 4};
  return {kGzip, kFiles, isFastq ? 4 : 2, 0};
}

void readFiles(bool isFastq, const std::string& a, const std::string& b) {
  if constexpr (kFiles == 0 && kGzip) {
    isFastq ? LoadPEfqPair_gz(a) : LoadPEfaPair_gz(a);
  } else if constexpr (kFiles == 0) {
    isFastq ? LoadPEfqPair(a) : LoadPEfaPair(a);
  } else if constexpr (kFiles == 2 && kGzip) {
    isFastq ? LoadPEfq_gz(a, b) : LoadPEfa_gz(a, b);
  } else if constexpr (kFiles == 2) {
    isFastq ? LoadPEfq(a, b) : LoadPEfa(a, b);
  } else if constexpr (kGzip) {
    isFastq ? LoadSEfq_gz(a) : LoadSEfa_gz(a);
  } else {
    isFastq ? LoadSEfq(a, "") : LoadSEfa(a, "");
  }
}

// The bytes of a gzip file: the text itself (of which libFuzzer then makes gzip files), or the text
// in members of a few bytes, whole, cut short or with a flipped bit.
struct GzipMaker {
  int way;
  std::size_t members;
  std::size_t place;

  std::string operator()(const std::string& text) const {
    if (way % 4 == 0) return text;
    std::string file = storedAsGzip(text, members == 0 ? 60000 : members);
    const std::size_t at = place * file.size() / 64;
    if (way % 4 == 2) file.resize(at);
    if (way % 4 == 3) file[at] = static_cast<char>(file[at] ^ 1 << way / 4 % 8);
    return file;
  }
};

struct Run {
  ReadBatches batches;
  std::string messages;
};

Run runReader(const ReadShape& shape, bool isFastq, const std::string& a, const std::string& b) {
  std::vector<std::string> slotsA(static_cast<std::size_t>(batchLimit));
  std::vector<std::string> slotsB(static_cast<std::size_t>(batchLimit));
  readsA = slotsA.data();
  readsB = shape.isPaired() ? slotsB.data() : nullptr;
  threadNum = 0;  // there are no workers
  Run run;
  handedOver = &run.batches;
  Said said;
  require(statusOf([&] { readFiles(isFastq, a, b); }) == kRanOn, "a read file ends the run");
  run.messages = said.errors();
  readsA = readsB = nullptr;
  return run;
}

std::size_t damageMessages(const std::string& messages) {
  constexpr std::string_view kDamage = "[ERROR]: damaged gzip file: ";
  std::size_t count = 0;
  for (std::size_t at = messages.find(kDamage); at != std::string::npos;
       at = messages.find(kDamage, at + 1)) {
    ++count;
  }
  return count;
}

std::string messagesOf(const ReadShape& shape, const ReadBatches& batches) {
  std::string messages;
  for (const ReadBatch& batch : batches) {
    messages += "bufferNum: " + std::to_string(batch.a.size()) + "\n";
  }
  return shape.isPaired() ? messages : messages + "Find reads finished!\n";
}

void compare(bool isFastq, const std::string& first, const std::string& second) {
  static const MemoryFile kFirst;
  static const MemoryFile kSecond;
  const ReadShape shape = shapeOf(isFastq);
  const Inflated a = kGzip ? inflated(first) : Inflated{first, false};
  const Inflated b = kGzip ? inflated(second) : Inflated{second, false};
  const ReadBatches model =
      batchesOf(shape, a.bytes, b.bytes, static_cast<std::size_t>(batchLimit));

  kFirst.fill(first);
  if (kFiles == 2) kSecond.fill(second);
  const Run run = runReader(shape, isFastq, kFirst.name(), kSecond.name());
  require(run.batches == model, "other reads");
  const std::size_t damaged = (a.isDamaged ? 1U : 0U) + (kFiles == 2 && b.isDamaged ? 1U : 0U);
  require(damageMessages(run.messages) == damaged, "damage without its message, or the reverse");
  if (damaged == 0) require(run.messages == messagesOf(shape, model), "other messages");
}

}  // namespace

void tryInput(Input input) {
  const bool isFastq = input.next() % 2 == 1;
  batchLimit = 1 + input.next();
  const auto most = static_cast<std::size_t>(input.next());
  GzipMaker maker{0, 0, 0};
  if (kGzip) {
    maker.way = input.next();
    if (maker.way >= 32) thread_num = 2;  // inflates ahead
    maker.members = static_cast<std::size_t>(input.next());
    maker.place = static_cast<std::size_t>(input.next());
  }
  std::string first(input.rest());
  std::string second;
  if (const std::size_t cut = first.find('\f'); kFiles == 2 && cut != std::string::npos) {
    second = first.substr(cut + 1);
    first.resize(cut);
  }
  longestRead = most;
  compare(isFastq, maker(first), maker(second));
  longestRead = 0;
}

}  // namespace velk::fuzz
