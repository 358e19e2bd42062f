// Stays until run/ and check/ include the other by name.
#pragma once

#include "streaming/library.h"  // IWYU pragma: export
