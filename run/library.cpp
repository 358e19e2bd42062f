#include "run/library.h"

namespace velk::run {

const char* nameOf(LibraryKind kind) {
  switch (kind) {
    case LibraryKind::kPairs:
      return "pairs";
    case LibraryKind::kMatePairs:
      return "mate-pairs";
    case LibraryKind::kSingle:
      break;
  }
  return "single";
}

const char* nameOf(Orientation orientation) {
  return orientation == Orientation::kInward ? "FR" : "RF";
}

}  // namespace velk::run
