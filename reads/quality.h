// Which scale the qualities of reads are on.
#pragma once

#include "reads/readInput.h"

namespace velk::reads {

/// Whether the qualities of a sample are most likely Phred+64, the scale of sequencers before 2011:
/// none below that scale, the best beyond what Phred+33 is used for. False without qualities.
bool looksLikePhred64(const Sample& sample);

}  // namespace velk::reads
