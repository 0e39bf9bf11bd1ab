#include "zeltbraidwerk/clifford/search/internal/placed_table.h"

#include <array>
#include <atomic>
#include <bit>

#include "zeltbraidwerk/clifford/search/internal/window_symmetries.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

bool anticommute(unsigned a, unsigned b) {
  const unsigned swapped = (b & 0x55U) << 1 | (b & 0xaaU) >> 1;
  return (std::popcount(a & swapped) & 1) != 0;
}

/// X and Z of a qubit each, anticommuting with no other qubit's, found among what commutes with
/// a plane.
std::vector<unsigned> basis_beside(unsigned x, unsigned z, unsigned operators) {
  std::vector<unsigned> basis{x, z};
  const auto freed = [&](unsigned pauli) {
    for (std::size_t k = 0; k < basis.size(); k += 2) {
      const bool with_x = anticommute(pauli, basis[k]);
      const bool with_z = anticommute(pauli, basis[k + 1]);
      pauli ^= (with_x ? basis[k + 1] : 0) ^ (with_z ? basis[k] : 0);
    }
    return pauli;
  };
  for (unsigned pauli = 1; pauli < operators; ++pauli) {
    const unsigned first = freed(pauli);
    if (first == 0) continue;
    unsigned second = 0;
    for (unsigned other = 1; !anticommute(first, second); ++other) second = freed(other);
    basis.push_back(first);
    basis.push_back(second);
  }
  return {basis.begin() + 2, basis.end()};
}

}  // namespace

template <int wires>
Planes<wires>::Planes() {
  for (unsigned x = 1; x < operators; ++x) {
    for (unsigned z = x + 1; z < operators; ++z) {
      const unsigned y = x ^ z;
      if (y < z || !anticommute(x, z)) continue;
      const auto plane = static_cast<std::uint16_t>(rest_.size());
      for (const auto& [a, b] : {std::pair{x, z}, {z, x}, {x, y}, {y, x}, {y, z}, {z, y}}) {
        number_[a][b] = plane;
      }
      auto& rest = rest_.emplace_back();
      const std::vector<unsigned> basis = basis_beside(x, z, operators);
      for (unsigned pauli = 0; pauli < operators; ++pauli) {
        unsigned read = 0;
        for (unsigned k = 0; k < basis.size(); ++k) {
          read |= static_cast<unsigned>(anticommute(pauli, basis[k ^ 1])) << k;
        }
        rest[pauli] = static_cast<std::uint8_t>(read);
      }
    }
  }
}

template <int wires>
const Planes<wires>& Planes<wires>::shared() {
  static const Planes planes;
  return planes;
}

/// Breadth first over one operator of each orbit.
template <int wires>
PlacedTable<wires>::PlacedTable(std::uint64_t allowed)
    : allowed_(allowed), residues_((size + 3) / 4, std::uint8_t{0xff}) {
  const WindowSymmetries<wires> symmetries(Outputs::in_place, allowed);
  std::vector<WindowRows> orbits;
  const auto fill = [&](WindowRows rows, unsigned value) {
    orbits.push_back(rows);
    symmetries.each_image(rows, [&](unsigned, WindowRows image) {
      const std::size_t k = index(image);
      // From 3, which is all ones.
      residues_[k / 4] &= static_cast<std::uint8_t>(~((3 - value) << (2 * (k % 4))));
    });
  };
  fill(identity_rows_on(wires), 0);
  for (std::size_t k = 0; k < orbits.size(); ++k) {
    stop_point();
    const unsigned next = (residue(orbits[k]) + 1) % 3;
    for (unsigned move = 0; move < moves; ++move) {
      if (!allows(move)) continue;
      const WindowRows rows = rows_after(window_gates[move], orbits[k]);
      if (residue(rows) == 3) fill(rows, next);
    }
  }
}

template <int wires>
int PlacedTable<wires>::distance(WindowRows rows) const {
  if (residue(rows) == 3) return -1;
  int steps = 0;
  for (unsigned move = 0; move < moves;) {
    const WindowRows next = rows_after(window_gates[move], rows);
    if (allows(move) && residue(next) == (residue(rows) + 2) % 3) {
      rows = next;
      ++steps;
      move = 0;
    } else {
      ++move;
    }
  }
  return steps;
}

namespace {

template <int wires>
std::uint64_t moves_on_pairs(WindowGraph graph) {
  std::uint64_t moves = 0;
  for (int pair = 0; pair < wires * (wires - 1) / 2; ++pair) {
    if ((graph >> pair & 1) != 0) moves |= std::uint64_t{511} << (9 * pair);
  }
  return moves;
}

}  // namespace

template <int wires>
const PlacedTable<wires>& PlacedTable<wires>::of(WindowGraph graph) {
  static TableCache<WindowGraph, PlacedTable> tables;
  static std::array<std::atomic<const PlacedTable*>, complete_graph(wires) + 1> known;
  const PlacedTable* table = known[graph].load(std::memory_order_acquire);
  if (table == nullptr) {
    table = &tables.get(graph, [&] { return PlacedTable(moves_on_pairs<wires>(graph)); });
    known[graph].store(table, std::memory_order_release);
  }
  return *table;
}

template class Planes<2>;
template class Planes<3>;
template class Planes<4>;
template class PlacedTable<2>;
template class PlacedTable<3>;
template class PlacedTable<4>;

}  // namespace zelt::braidwerk::internal
