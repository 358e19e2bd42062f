#include "run/insertTable.h"

namespace velk::run {

std::string insertTable(const std::vector<Library>& libraries) {
  std::string text = "library\torientation\tfrom\tto\tpairs\n";
  for (const Library& library : libraries) {
    for (std::size_t o = 0; o < library.inserts.size(); ++o) {
      const std::vector<uint64_t>& bins = library.inserts[o].bins();
      for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        if (bins[bin] == 0) continue;
        text.append(library.name).append("\t").append(kOrientationNames[o]);
        for (const uint64_t number :
             {InsertHistogram::startOf(bin), InsertHistogram::startOf(bin + 1), bins[bin]}) {
          text.append("\t").append(std::to_string(number));
        }
        text += "\n";
      }
    }
  }
  return text;
}

}  // namespace velk::run
