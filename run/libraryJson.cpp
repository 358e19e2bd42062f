#include "run/libraryJson.h"

namespace velk::run {

nlohmann::ordered_json jsonOf(const Library& library) {
  nlohmann::ordered_json json{{"name", library.name}, {"kind", nameOf(library.kind)}};
  if (!library.arePairs()) return json;
  json["orientation"] = nameOf(library.orientation);
  json["orientation_source"] = library.orientationSource();
  json["insert"] = library.insert;
  json["insert_source"] = library.insertSource();
  json["spread"] = library.spread;
  return json;
}

}  // namespace velk::run
