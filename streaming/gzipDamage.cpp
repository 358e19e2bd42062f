#include "streaming/gzipDamage.h"

#include <ostream>

#include "driver/fatal.h"

namespace velk {
namespace {

bool damageSeen = false;

}  // namespace

void reportGzipDamage(const std::string& file, const std::string& reason) {
  failureMessage() << "[ERROR]: damaged gzip file: " << file << ": " << reason << "\n";
  damageSeen = true;
}

bool gzipDamageSeen() {
  return damageSeen;
}

void forgetGzipDamage() {
  damageSeen = false;
}

}  // namespace velk
