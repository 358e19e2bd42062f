// Inflates with ISA-L. Only in builds that have found it.
#pragma once

#include <isa-l/igzip_lib.h>

#include "streaming/inflater.h"

namespace velk {

class IsalInflater : public Inflater {
 public:
  IsalInflater();

  void start() override;
  Step inflate(std::string_view input, std::span<char> room) override;
  uint32_t checksum() const override { return stream_.crc; }

 private:
  std::size_t takeHeldBack(std::span<char> room);

  inflate_state stream_;
  bool isDamaged_ = false;
};

}  // namespace velk
