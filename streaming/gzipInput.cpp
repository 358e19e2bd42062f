#include "streaming/gzipInput.h"

#include "driver/listener.h"

namespace velk {
namespace {

bool damageSeen = false;

}  // namespace

void reportGzipDamage(const std::string& file, const std::string& reason) {
  listener->complain("[ERROR]: damaged gzip file: " + file + ": " + reason + "\n");
  damageSeen = true;
}

bool gzipDamageSeen() {
  return damageSeen;
}

void forgetGzipDamage() {
  damageSeen = false;
}

}  // namespace velk
