#include "run/md5.h"

#include <htslib/hts.h>

#include <array>
#include <new>

namespace velk::run {

Md5::Md5() : context_(hts_md5_init()) {
  if (context_ == nullptr) throw std::bad_alloc();
}

Md5::~Md5() {
  hts_md5_destroy(context_);
}

void Md5::add(std::string_view bytes) {
  hts_md5_update(context_, bytes.data(), bytes.size());
}

std::string Md5::sum() {
  std::array<unsigned char, 16> digest{};
  std::array<char, 33> hex{};
  hts_md5_final(digest.data(), context_);
  hts_md5_hex(hex.data(), digest.data());
  return hex.data();
}

std::string md5OfText(std::string_view text) {
  Md5 md5;
  md5.add(text);
  return md5.sum();
}

}  // namespace velk::run
