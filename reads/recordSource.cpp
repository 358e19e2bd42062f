#include "reads/recordSource.h"

#include "reads/bamRecords.h"
#include "reads/storedFile.h"
#include "reads/textRecords.h"
#include "streaming/gzipDecoder.h"

namespace velk::reads {
namespace {

std::unique_ptr<RecordSource> openBam(StoredFile& file, Helpers helpers) {
  if (helpers == Helpers::kNone) return std::make_unique<BamRecords>(file);
  return std::make_unique<BamAhead>(std::make_shared<BamRecords>(file));
}

}  // namespace

Helpers helpersFor(int threads) {
  if (threads <= 1) return Helpers::kNone;
  return inflatersFor(threads) == 1 ? Helpers::kInflateAhead : Helpers::kInflateByTwo;
}

std::unique_ptr<RecordSource> openRecords(const std::string& file, Helpers helpers) {
  return openRecords(std::make_unique<StoredFile>(file), helpers);
}

std::unique_ptr<RecordSource> openRecords(std::unique_ptr<StoredFile> file, Helpers helpers) {
  if (file->start().starts_with("CRAM")) {
    throw InputError(file->name(), 0, "is CRAM; `samtools collate` makes BAM of it");
  }
  if (file->isBam()) return openBam(*file, helpers);
  return std::make_unique<TextRecords>(std::make_unique<TextBlocks>(std::move(file), helpers));
}

}  // namespace velk::reads
