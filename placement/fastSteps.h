// The steps by which the fast engine saves look-ups. Each can be left out; what is found stays the
// same. velk has all of them.
#pragma once

namespace velk {

struct FastSteps {
  bool groups = true;     // reads are prepared in groups, and prefetch
  bool leads = true;      // mates of a read that hits at once are only packed
  bool align = true;      // windows that agree with the text are not looked up
  bool sift = true;       // windows are ruled out by their seeds
  bool reversed = true;   // windows are ruled out on the strand opposite a match
  bool diagonals = true;  // the diagonal of a refused hit is skipped
  bool repeats = true;    // the diagonal of a repeat is skipped where it repeats
};

#ifndef VELK_FAST_STEPS
#define VELK_FAST_STEPS \
  FastSteps {}  // a benchmark may build velk with others
#endif

}  // namespace velk
