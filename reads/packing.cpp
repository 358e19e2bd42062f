#include "reads/packing.h"

namespace velk::reads {
namespace {

struct Mark {
  Packing packing;
  std::string_view name;
  std::string_view start;
};

constexpr Mark kMarks[] = {
    {Packing::kGzip, "gzip", "\x1f\x8b"},
    {Packing::kZstd, "zstd", "\x28\xb5\x2f\xfd"},
    {Packing::kXz, "xz", std::string_view("\xfd\x37zXZ\0", 6)},
    {Packing::kBzip2, "bzip2", "BZh"},
};

// A zstd file may begin with a frame to be skipped: sixteen marks, which differ in the first byte.
bool isSkippableFrame(std::string_view start) {
  return start.size() >= 4 && (start[0] & 0xf0) == 0x50 && start.substr(1, 3) == "\x2a\x4d\x18";
}

}  // namespace

Packing packingOf(std::string_view start) {
  for (const Mark& mark : kMarks) {
    if (start.starts_with(mark.start)) return mark.packing;
  }
  return isSkippableFrame(start) ? Packing::kZstd : Packing::kNone;
}

std::string_view nameOf(Packing packing) {
  for (const Mark& mark : kMarks) {
    if (mark.packing == packing) return mark.name;
  }
  return "plain";
}

}  // namespace velk::reads
