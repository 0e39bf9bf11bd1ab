#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/map_table.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/table_store.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// A set of sums of four wires: bit v stands for the sum of the wires set in v.
using SumSet = std::uint16_t;

/// For every invertible 4 x 4 matrix and every set of sums the fewest CNOTs on the edges of a
/// connected graph that implement the matrix, as it is or with the outputs on other wires
/// (`permuted`), while every sum of the set stands on some wire at some time. Sums of one wire
/// stand there from the start and are left out.
///
/// 2 MB on the complete graph, up to 21 MB on the path, as there is one entry for all matrices and
/// sets that differ by names of wires alone. Built in 0.05 to 0.35 s where no file has the table.
class ParityTable {
 public:
  ParityTable(WindowGraph graph, bool permuted);

  /// The one table of its kind, built when it is first asked for; safe to call from all threads.
  /// Tables stay until the process ends.
  static const ParityTable& of(WindowGraph graph, bool permuted);

  int distance(SmallMatrix m, SumSet needed) const { return distance_of(m, slots_of(needed)); }

  /// A matrix with the fewest CNOTs for the set, whatever else it does.
  SmallMatrix any_end(SumSet needed) const { return any_end_[slots_of(needed)]; }

  /// A random one of the shortest circuits, in time order, one after the other by random first
  /// gates that lead closer; with `detour` one of its gates does not, where there is such a gate.
  /// Returns what is left of m after the circuit: the identity, or the permutation that the
  /// outputs are still to take.
  SmallMatrix descend(SmallMatrix m, SumSet needed, bool detour, Rng& rng,
                      std::vector<Gate>& block) const;

 private:
  static constexpr int wires = 4;
  static constexpr int slots = 11;  // sums of two wires and more
  static constexpr std::size_t sets = std::size_t{1} << slots;

  struct Place {
    std::uint16_t kind;     // of the matrix, by names of wires
    std::uint8_t renaming;  // the one that makes it the first of its kind
  };

  static constexpr unsigned slots_of(SumSet sums) {
    return ((sums >> 3) & 1U) | ((sums >> 5) & 7U) << 1 | ((sums >> 9) & 127U) << 4;
  }
  int distance_of(SmallMatrix m, unsigned set) const {
    const Place place = place_[m];
    return distance_[place.kind * sets + renamed_[place.renaming][set]];
  }

  struct Move {
    std::uint8_t control;
    std::uint8_t target;
    std::array<std::uint16_t, sets> sets_after;
  };

  struct Step;

  void fill_renamed_sets(const std::vector<WireNames>& namings);
  std::vector<SmallMatrix> fill_places(const std::vector<WireNames>& namings);
  void fill_moves(WindowGraph graph);
  std::vector<Step> steps_between(const std::vector<SmallMatrix>& first_of_kind,
                                  const std::vector<WireNames>& namings) const;
  std::vector<std::uint8_t> distances(const std::vector<SmallMatrix>& first_of_kind,
                                      const std::vector<Step>& steps, bool permuted) const;
  std::vector<std::uint16_t> any_ends(const std::vector<SmallMatrix>& first_of_kind) const;

  std::vector<Place> place_;                              // by matrix
  std::vector<std::array<std::uint16_t, sets>> renamed_;  // by renaming
  std::vector<Move> moves_;
  StoredTable<std::uint8_t> distance_;
  StoredTable<std::uint16_t> any_end_;
};

}  // namespace zelt::braidwerk::internal
