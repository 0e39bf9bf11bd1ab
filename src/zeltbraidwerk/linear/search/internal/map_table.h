#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/table_store.h"
#include "zeltbraidwerk/search/internal/walk.h"
#include "zeltbraidwerk/search/internal/window.h"
#include "zeltbraidwerk/search/internal/window_shape.h"

namespace zelt::braidwerk::internal {

/// A matrix of up to 5 x 5 over GF(2): entry (r, c) of a k x k matrix is bit k * r + c.
using SmallMatrix = std::uint32_t;

/// For every invertible k x k matrix the fewest CNOTs on the edges of a graph that implement it,
/// either as it is or with the outputs on other wires (`permuted`). 32 MB for k = 5, 64 kB for
/// k = 4. By breadth-first search over classes of matrices that differ in the names of wires alone:
/// 0.05 to 0.6 s for k = 5, where no file has the table.
class MapTable {
 public:
  static constexpr std::uint8_t unreachable = 255;

  MapTable(int wires, WindowGraph graph, bool permuted);

  /// The one table of its kind, built when it is first asked for; safe to call from all threads.
  /// Tables stay until the process ends.
  static const MapTable& of(int wires, WindowGraph graph, bool permuted);

  int wires() const { return wires_; }
  int distance(SmallMatrix m) const { return distance_[m]; }

  SmallMatrix identity() const { return identity_; }
  /// The map followed by a CNOT.
  SmallMatrix then(SmallMatrix m, int control, int target) const {
    return m ^ (((m >> (wires_ * control)) & low_row_) << (wires_ * target));
  }
  SmallMatrix map_of(const std::vector<Gate>& block) const;
  /// The map of b, then of a.
  SmallMatrix product(SmallMatrix a, SmallMatrix b) const;

  /// A random one of the shortest circuits for m, in time order, one after the other by random
  /// first gates that lead closer. `detours` of the gates lead no closer: the circuit is so much
  /// longer, or less where there is no such gate. Returns what is left of m after the circuit:
  /// the identity, or the permutation that the outputs are still to take.
  SmallMatrix descend(SmallMatrix m, int detours, Rng& rng, std::vector<Gate>& block) const;

 private:
  struct Move {
    std::uint8_t control;
    std::uint8_t target;
  };

  std::vector<std::uint8_t> distances() const;
  /// The map with a CNOT in front taken away, which is the same as one put there.
  SmallMatrix without(SmallMatrix m, Move first) const {
    return m ^ (((m >> first.target) & low_column_) << first.control);
  }

  int wires_;
  SmallMatrix low_row_;
  SmallMatrix low_column_;
  SmallMatrix identity_;
  WindowGraph graph_;
  bool permuted_;
  std::vector<Move> moves_;
  StoredTable<std::uint8_t> distance_;
};

}  // namespace zelt::braidwerk::internal
