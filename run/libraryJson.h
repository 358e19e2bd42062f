// A library as the files of JSON have it, the plan and the summary.
#pragma once

#include <nlohmann/json.hpp>

#include "run/library.h"

namespace velk::run {

/// Its name, its kind and, of pairs, orientation and insert size with where they come from.
nlohmann::ordered_json jsonOf(const Library& library);

}  // namespace velk::run
