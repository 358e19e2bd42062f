// How long velk takes to read records of a file, by a short try.
#pragma once

#include <string>

#include "check/survey.h"

namespace velk::check {

/// Returns the seconds in which velk's own line sources read one record of `input`: a read, or both
/// reads of a pair. 0 when the file gives none.
double secondsToReadRecord(const ReadInput& input);

}  // namespace velk::check
