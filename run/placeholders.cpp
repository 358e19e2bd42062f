#include "run/placeholders.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "run/failure.h"

namespace velk::run {

bool PlaceholderRule::holds(const std::string& scaffold, uint64_t start, uint64_t length) const {
  if (std::find(lengths.begin(), lengths.end(), length) != lengths.end()) return true;
  const auto found = positions.find(scaffold);
  return found != positions.end() &&
         std::find(found->second.begin(), found->second.end(), start) != found->second.end();
}

PlaceholderRule readPlaceholders(const std::vector<uint64_t>& lengths, const std::string& agp) {
  PlaceholderRule rule{lengths, {}};
  if (agp.empty()) return rule;
  std::ifstream stream(agp);
  if (!stream) throw Failure(Status::kFailed, agp + ": can't be opened");
  std::size_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    if (line.empty() || line.starts_with('#')) continue;
    std::istringstream columns(line);
    std::string object;
    uint64_t from = 0;
    uint64_t to = 0;
    uint64_t part = 0;
    std::string type;
    if (!(columns >> object >> from >> to >> part >> type) || from == 0 || to < from) {
      throw Failure(Status::kUsage,
                    agp + ", line " + std::to_string(number) + ": not a line of an AGP file");
    }
    if (type == "U") rule.positions[object].push_back(from - 1);
  }
  if (stream.bad()) throw Failure(Status::kFailed, agp + ": can't be read");
  return rule;
}

}  // namespace velk::run
