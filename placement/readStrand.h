// One strand of a read of a batch, its bases made when they are asked for.
#pragma once

#include <cstddef>
#include <string>

#include "placement/reverseComplement.h"
#include "placement/sink.h"

namespace velk {

/// A Read as placement/place.h takes it.
template <class Engine>
class ReadStrand {
 public:
  using Prepared = typename Engine::Prepared;

  /// `bases` as they stand.
  ReadStrand(Engine& engine, Prepared& read, const std::string& bases, const Origin& origin)
      : engine_(engine), read_(read), origin_(origin), length_(bases.size()), bases_(&bases) {}

  /// The reverse complement of what was prepared, as the engine makes it.
  ReadStrand(Engine& engine, Prepared& read, const Origin& origin)
      : engine_(engine), read_(read), origin_(origin), length_(read.bases->size()) {}

  /// The reverse complement of `forward`, to be made in `room`.
  ReadStrand(Engine& engine, Prepared& read, const std::string& forward, std::string& room,
             const Origin& origin)
      : engine_(engine),
        read_(read),
        origin_(origin),
        length_(forward.size()),
        forward_(&forward),
        room_(&room) {}

  std::size_t size() const { return length_; }
  const Origin& origin() const { return origin_; }

  const std::string& bases() {
    if (bases_ == nullptr) bases_ = room_ == nullptr ? &engine_.reverseComplement(read_) : make();
    return *bases_;
  }

  typename Engine::Windows windows() { return engine_.windows(read_, bases(), origin_.isReversed); }

 private:
  const std::string* make() {
    room_->resize(length_);
    reverseComplement(room_->data(), forward_->data(), length_);
    return room_;
  }

  Engine& engine_;
  Prepared& read_;
  Origin origin_;
  std::size_t length_;
  const std::string* bases_ = nullptr;
  const std::string* forward_ = nullptr;
  std::string* room_ = nullptr;
};

}  // namespace velk
