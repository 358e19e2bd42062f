#include "streaming/gzipDamage.h"

#include <iostream>

namespace velk {
namespace {

bool damageSeen = false;

}  // namespace

void reportGzipDamage(const std::string& file, const std::string& reason) {
  std::cerr << "[ERROR]: damaged gzip file: " << file << ": " << reason << "\n";
  damageSeen = true;
}

bool gzipDamageSeen() {
  return damageSeen;
}

}  // namespace velk
