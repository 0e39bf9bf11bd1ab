#pragma once

#include <cstdint>
#include <utility>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/linear/search/internal/block_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The search for a short circuit of one matrix with its outputs anywhere, round by round: a part
/// of the search for a map, which has one for each of its different blocks.
class FreeSearch {
 public:
  /// Walks have windows of up to that number of wires.
  FreeSearch(BitMatrix m, int window);

  /// Finds a circuit, whatever the effort.
  void first(Rng& rng);

  /// Takes a known circuit for the best, where it is no longer.
  void begin_with(const GateList& list) {
    if (list.count() > best_.count()) return;
    best_ = list;
    shortest_ = list.count();
    known_ = true;
  }

  const GateList& best() const { return best_; }
  bool finished() const { return optimal_; }  ///< there is nothing shorter

  /// Round 0, 1, ...: another start where one pays, a walk of `steps` steps from it, and one of the
  /// same length from the best so far; or, at middle sizes, one long hot walk in every third round,
  /// as long as those of three. found(list) hears of lists that are no longer than any before.
  template <class Found>
  void round(int number, std::uint64_t steps, Rng& rng, Meter& meter, Found&& found) {
    if (optimal_) return;
    const BlockRewriter rewriter(window_, true);
    const auto offer = [&](const GateList& list) {
      if (list.count() > shortest_) return;
      shortest_ = list.count();
      found(list);
    };
    const auto walk = [&](GateList& list, std::uint64_t length) {
      walk_among_equals(list, rewriter, length, cooling(), rng, meter, offer);
    };
    GateList fresh = start(number, steps, rng, meter);
    if (!fresh.gates.empty()) {
      offer(fresh);
      const int hopeless = best_.count() + best_.count() / cnot_tuning.hopeless_part;
      if (fresh.count() <= hopeless && !long_walks_) walk(fresh, steps);
      // A hot walk forgets how long its start was, but not how it was made: from beams it gets
      // further than from a greedy run by columns, even from one that is shorter.
      const bool is_first_beam =
          long_walks_ && number == 0 && !known_ && n_ >= cnot_tuning.least_quick_columns;
      if (is_first_beam || fresh.count() <= best_.count()) best_ = std::move(fresh);
    }
    if (!long_walks_) {
      walk(best_, steps);
    } else if (number % cnot_tuning.long_walk_period == 0) {
      walk(best_, cnot_tuning.long_walk * steps);
    }
  }

  /// Whether long walks are worth more than many: for dense maps of 11 to 40 wires.
  bool prefers_long_walks() const { return long_walks_; }
  /// Of walks on maps of this size and kind.
  Cooling cooling() const;

 private:
  void make_first_greedily(Rng& rng);
  GateList start(int number, std::uint64_t steps, Rng& rng, Meter& meter);
  GateList start_by_columns(int number, std::uint64_t steps, Rng& rng, Meter& meter);
  GateList start_by_decoding(int number, std::uint64_t steps, Rng& rng, Meter& meter);
  bool by_columns() const;  ///< dense maps of more than 32 wires

  BitMatrix m_;
  int n_;
  Facing lighter_ = Facing::plain;  // of the map and its inverse, the one of fewer ones
  bool sparse_ = false;             // that one is: ciphers
  bool long_walks_ = false;
  bool optimal_ = false;
  bool known_ = false;  // the best is a circuit that was given
  GateList best_;
  int shortest_ = 0;
  int window_;
  double decoding_per_second_ = 0;  // steps, of the last start by decoding
};

}  // namespace zelt::braidwerk::internal
