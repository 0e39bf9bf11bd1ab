#pragma once

#include <cstdint>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/linear/search/internal/block_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// From a circuit as the engine has it: output r comes out on wire perm[r].
FreeCircuit free_circuit(const GateList& list);
GateList gate_list(const FreeCircuit& found);

/// A circuit of m by a beam search on one of its facings; without gates when it found none.
GateList reduce(const BitMatrix& m, const ReductionCost& cost, int width, Facing facing, Rng& rng,
                Meter& meter);

/// Without gates, of a permutation of the inputs.
GateList relabelled(const BitMatrix& m);

/// A circuit of the elimination by pairs on a facing of a matrix, outputs in place.
GateList by_pairs(const BitMatrix& m, Facing facing);

/// A random one of the shortest circuits of a matrix of up to 5 rows.
GateList shortest_circuit(const BitMatrix& m, bool permuted, Rng& rng);

/// The search for a circuit of one matrix with its outputs where they like, round by round.
class FreeSearch {
 public:
  /// Finds a first circuit, whatever the effort. Its walks have windows of up to so many wires.
  FreeSearch(BitMatrix m, int window, Rng& rng);

  const GateList& best() const { return best_; }
  bool finished() const { return optimal_; }  ///< there is nothing shorter

  /// Round 0, 1, ...: another start where one pays, a walk of `steps` steps from it, and one of as
  /// many from the best so far; or, at middle sizes, one long hot walk in every third round, as
  /// long as those of three. look(list) hears of lists that are no longer than the best.
  template <class Look>
  void round(int number, std::uint64_t steps, Rng& rng, Meter& meter, Look&& look) {
    if (optimal_) return;
    const BlockRewriter rewriter(window_, true);
    const auto heard = [&](const GateList& list, bool) {
      if (list.count() <= shortest_) {
        shortest_ = list.count();
        look(list);
      }
      return true;  // equals take over: they lead elsewhere
    };
    GateList fresh = start(number, steps, rng, meter);
    if (!fresh.gates.empty()) {
      heard(fresh, true);
      const bool far = fresh.count() > best_.count() + best_.count() / 8;
      if (!far && !long_) walk_round(fresh, rewriter, steps, cooling(), rng, meter, heard);
      if (fresh.count() <= best_.count()) best_ = std::move(fresh);
    }
    if (!long_) {
      walk_round(best_, rewriter, steps, cooling(), rng, meter, heard);
    } else if (number % 3 == 0) {
      walk_round(best_, rewriter, 10 * steps, cooling(), rng, meter, heard);
    }
  }

  /// Whether long walks are worth more than many: for dense maps of 11 to 40 wires.
  bool prefers_long_walks() const { return long_; }
  /// Of walks on maps of this size and kind.
  Cooling cooling() const;

 private:
  GateList start(int number, std::uint64_t steps, Rng& rng, Meter& meter) const;
  bool by_columns() const;  ///< dense maps of more than 40 wires

  BitMatrix m_;
  bool sparse_;  // or its inverse is: ciphers
  bool long_;
  bool optimal_ = false;
  GateList best_;
  int shortest_;
  int window_;
};

}  // namespace zelt::braidwerk::internal
