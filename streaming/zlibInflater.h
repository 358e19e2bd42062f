// Inflates with zlib.
#pragma once

#include <zlib.h>

#include "streaming/inflater.h"

namespace velk {

class ZlibInflater : public Inflater {
 public:
  /// Throws std::bad_alloc when zlib gets no memory.
  ZlibInflater();
  ~ZlibInflater() override;

  void start() override;
  Step inflate(std::string_view input, std::span<char> room) override;
  uint32_t checksum() const override { return checksum_; }

 private:
  z_stream stream_{};
  uint32_t checksum_ = 0;
};

}  // namespace velk
