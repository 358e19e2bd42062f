// The record that all tables of kinds of findings are made of.
#pragma once

#include <string_view>

namespace velk::check {

enum class Level {
  kNote,     // changes no result, or is as it should be; good to know
  kWarning,  // the result may be less than it could be
  kError,    // velk stops, or the result would be wrong or lost
};

struct Kind {
  std::string_view id;  // never changes its meaning
  Level level;
  std::string_view meaning;   // what is the matter
  std::string_view effect;    // what velk does with it
  std::string_view fix;       // what to do about it
  std::string_view run = {};  // where velk-run would not need that; empty: nowhere
};

/// Of kinds that velk-run takes as they are.
inline constexpr std::string_view kNoFix = "needs no fix";

}  // namespace velk::check
