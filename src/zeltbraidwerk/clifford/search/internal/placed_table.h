#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/window_moves.h"
#include "zeltbraidwerk/search/internal/table_store.h"
#include "zeltbraidwerk/search/internal/window_shape.h"

namespace zelt::braidwerk::internal {

/// Numbers for the hyperbolic planes, pairs of anticommuting operators with their product, among
/// the operators on `wires` qubits; and for each of them the operators that commute with it, read
/// as operators on one qubit less.
template <int wires>
class Planes {
 public:
  static constexpr std::size_t operators = std::size_t{1} << (2 * wires);
  static constexpr std::size_t count = (operators - 1) * (operators / 2) / 6;

  static const Planes& shared();

  int number(unsigned x, unsigned z) const { return numbers_[operators * x + z]; }
  unsigned rest(int plane, unsigned pauli) const {
    return rests_[operators * static_cast<std::size_t>(plane) + pauli];
  }

 private:
  Planes();

  StoredTable<std::uint16_t> numbers_;
  StoredTable<std::uint8_t> rests_;
};

/// The fewest gates for every Clifford operator on 2 to 4 wires with its outputs in place, up to
/// one-qubit gates on them, with gates on some pairs of wires alone. On four wires these are
/// 36,556,800 classes in 9 MB, built in one to two seconds where no file has the table.
///
/// Only distances modulo 3 are held: one gate changes them by one at most.
template <int wires>
class PlacedTable {
 public:
  static constexpr unsigned moves = moves_on(wires);
  static constexpr std::uint64_t all_moves = (std::uint64_t{1} << moves) - 1;

  explicit PlacedTable(std::uint64_t allowed);
  /// The one with all gates, built when it is asked for first.
  static const PlacedTable& shared() { return of(complete_graph(wires)); }
  /// The one with the gates on these pairs. On four wires there are six connected graphs up to the
  /// names of their wires: ask for the least ones, as each table takes 9 MB.
  static const PlacedTable& of(WindowGraph graph);

  /// The distance modulo 3, or 3 out of reach.
  unsigned residue(WindowRows rows) const { return residue(residues_.all(), index(rows)); }
  /// -1 out of reach. Goes all the way down.
  int distance(WindowRows rows) const;
  bool allows(unsigned move) const { return (allowed_ >> move & 1) != 0; }

 private:
  /// The planes of the wires' labels, each among those that commute with the ones before.
  static std::size_t index(WindowRows rows) {
    const auto byte = [&](int k) { return static_cast<unsigned>(rows >> (8 * k)) & 255; };
    const auto& planes = Planes<wires>::shared();
    const int first = planes.number(byte(0), byte(1));
    if constexpr (wires == 2) {
      return static_cast<std::size_t>(first);
    } else {
      WindowRows rest = 0;
      for (int k = 2; k < 2 * wires; ++k) {
        rest |= WindowRows{planes.rest(first, byte(k))} << (8 * (k - 2));
      }
      return static_cast<std::size_t>(first) * PlacedTable<wires - 1>::size +
             PlacedTable<wires - 1>::index(rest);
    }
  }
  static unsigned residue(std::span<const std::uint8_t> residues, std::size_t k) {
    return residues[k / 4] >> (2 * (k % 4)) & 3U;
  }
  std::vector<std::uint8_t> residues() const;

  static constexpr std::size_t size = wires == 2 ? 20 : wires == 3 ? 6720 : 36556800;

  template <int>
  friend class PlacedTable;

  std::uint64_t allowed_;
  StoredTable<std::uint8_t> residues_;  ///< four per byte
};

extern template class PlacedTable<2>;
extern template class PlacedTable<3>;
extern template class PlacedTable<4>;

}  // namespace zelt::braidwerk::internal
