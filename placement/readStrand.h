// One strand of a read that an engine has prepared, its bases made when they are asked for.
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

  /// `bases` as they stand, or their reverse complement, to be made in `room`. origin.isReversed:
  /// whether that is the reverse complement of what was prepared.
  ReadStrand(Engine& engine, Prepared& read, const std::string& bases, const Origin& origin,
             std::string* room = nullptr)
      : engine_(engine), read_(read), given_(bases), origin_(origin), room_(room) {}

  Prepared& prepared() { return read_; }
  const Origin& origin() const { return origin_; }
  std::size_t size() const { return given_.size(); }

  const std::string& bases() {
    if (room_ == nullptr) return given_;
    if (!isMade_) {
      room_->resize(size());
      reverseComplement(room_->data(), given_.data(), size());
      isMade_ = true;
    }
    return *room_;
  }

  template <class Visit>
  int64_t visitHits(Visit visit) {
    return engine_.visitHits(*this, visit);
  }

 private:
  Engine& engine_;
  Prepared& read_;
  const std::string& given_;
  Origin origin_;
  std::string* room_;
  bool isMade_ = false;
};

}  // namespace velk
