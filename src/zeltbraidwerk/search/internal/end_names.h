#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// Gives the ends of the gates after a new block their new names. Holds a name for each end, which
/// is its own but while gates are renamed.
class EndNames {
 public:
  explicit EndNames(std::size_t ends) : names_(ends) {
    for (std::size_t end = 0; end < ends; ++end) names_[end] = static_cast<End>(end);
  }

  /// The gates from place `from` on. each_new_name(f) calls f(end, its new name).
  template <class EachNewName>
  void rename(std::vector<Gate>& gates, int from, EachNewName&& each_new_name) {
    each_new_name([&](std::size_t end, End name) { names_[end] = name; });
    for (auto gate = gates.begin() + from; gate != gates.end(); ++gate) {
      *gate = {names_[gate->a], names_[gate->b]};
    }
    each_new_name([&](std::size_t end, End) { names_[end] = static_cast<End>(end); });
  }

 private:
  std::vector<End> names_;
};

}  // namespace zelt::braidwerk::internal
