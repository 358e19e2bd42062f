// The engine of this build, over the index of the run.
#pragma once

#ifdef VELK_PLAIN_ENGINE
#include "placement/plainEngine.h"
#else
#include "placement/fastEngine.h"
#endif

namespace velk {

#ifdef VELK_PLAIN_ENGINE
using Engine = PlainEngine;
#else
using Engine = FastEngine;
#endif

/// The engine over the run's index and model. REQUIRES: both are built.
Engine engineOfRun();

}  // namespace velk
