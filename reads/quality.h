// Stays until run/ and check/ include the other by name.
#pragma once

#include "reads/readInput.h"  // IWYU pragma: export
