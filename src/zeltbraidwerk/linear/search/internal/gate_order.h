#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// Gates of which some are to be before others, and which are put in a line only at the end: so
/// there is more room for gates between them than in any one line.
class GateOrder {
 public:
  /// After and before which gates a new one is to be.
  struct Place {
    std::vector<int> after;
    std::vector<int> before;
  };

  /// Puts a gate where there is room for it, and returns its number, from 0 on.
  int put(const Gate& gate, const Place& place);

  /// Whether there is room for new gates at all these places, up to 64 of them. New ones are after
  /// each other only because of gates that are there.
  bool have_room(const std::vector<Place>& places) const;

  bool is_before(int first, int second) const {
    return has(earlier_[static_cast<std::size_t>(second)], first);
  }

  /// One line of them.
  std::vector<Gate> line() const;

 private:
  using Set = std::vector<Word>;
  static bool has(const Set& set, int gate) {
    return ((set[static_cast<std::size_t>(gate / word_bits)] >> (gate % word_bits)) & 1) != 0;
  }
  static void include(Set& set, int gate) {
    set[static_cast<std::size_t>(gate / word_bits)] |= Word{1} << (gate % word_bits);
  }
  static void unite(Set& set, const Set& other) {
    for (std::size_t w = 0; w < set.size(); ++w) set[w] |= other[w];
  }
  /// Some gates and all that are beyond them.
  Set with(const std::vector<int>& gates, const std::vector<Set>& beyond) const;

  std::vector<Gate> gates_;
  std::vector<Set> earlier_;  // of each gate: all that are before it
  std::vector<Set> later_;
  std::size_t words_ = 0;
};

}  // namespace zelt::braidwerk::internal
