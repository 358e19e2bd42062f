// Stays until run/ and check/ include the other by name.
#pragma once

#include "reads/recordSource.h"  // IWYU pragma: export
