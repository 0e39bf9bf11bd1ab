#include "zeltbraidwerk/clifford/search/internal/placed_table.h"

#include <array>
#include <atomic>
#include <bit>
#include <string>
#include <utility>

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

/// Calls visit(x, z, x ^ z) for each plane, in the order of their numbers.
template <class F>
void each_plane(unsigned operators, F&& visit) {
  for (unsigned x = 1; x < operators; ++x) {
    for (unsigned z = x + 1; z < operators; ++z) {
      if ((x ^ z) > z && anticommute(x, z)) visit(x, z, x ^ z);
    }
  }
}

std::vector<std::uint16_t> plane_numbers(unsigned operators) {
  std::vector<std::uint16_t> numbers(std::size_t{operators} * operators);
  std::uint16_t plane = 0;
  each_plane(operators, [&](unsigned x, unsigned z, unsigned y) {
    for (const auto& [a, b] : {std::pair{x, z}, {z, x}, {x, y}, {y, x}, {y, z}, {z, y}}) {
      numbers[std::size_t{operators} * a + b] = plane;
    }
    ++plane;
  });
  return numbers;
}

std::vector<std::uint8_t> plane_rests(unsigned operators) {
  std::vector<std::uint8_t> rests;
  each_plane(operators, [&](unsigned x, unsigned z, unsigned) {
    const std::vector<unsigned> basis = basis_beside(x, z, operators);
    for (unsigned pauli = 0; pauli < operators; ++pauli) {
      unsigned read = 0;
      for (unsigned k = 0; k < basis.size(); ++k) {
        read |= static_cast<unsigned>(anticommute(pauli, basis[k ^ 1])) << k;
      }
      rests.push_back(static_cast<std::uint8_t>(read));
    }
  });
  return rests;
}

/// Goes up when the tables change.
constexpr std::uint32_t layout = 1;

}  // namespace

template <int wires>
Planes<wires>::Planes() {
  if constexpr (wires < 4) {
    numbers_ = StoredTable(plane_numbers(operators));
    rests_ = StoredTable(plane_rests(operators));
  } else {
    numbers_ = stored_table<std::uint16_t>("clifford-planes-4", layout, operators * operators,
                                           [] { return plane_numbers(operators); });
    rests_ = stored_table<std::uint8_t>("clifford-planes-4-rests", layout, count * operators,
                                        [] { return plane_rests(operators); });
  }
}

template <int wires>
const Planes<wires>& Planes<wires>::shared() {
  static const Planes planes;
  return planes;
}

template <int wires>
PlacedTable<wires>::PlacedTable(std::uint64_t allowed) : allowed_(allowed) {
  if constexpr (wires < 4) {
    residues_ = StoredTable(residues());
  } else {
    residues_ = stored_table<std::uint8_t>("clifford-placed-4-" + std::to_string(allowed), layout,
                                           (size + 3) / 4, [this] { return residues(); });
  }
}

/// Breadth first over one operator of each orbit.
template <int wires>
std::vector<std::uint8_t> PlacedTable<wires>::residues() const {
  std::vector<std::uint8_t> residues((size + 3) / 4, std::uint8_t{0xff});
  const WindowSymmetries<wires> symmetries(Outputs::in_place, allowed_);
  std::vector<WindowRows> orbits;
  const auto fill = [&](WindowRows rows, unsigned value) {
    orbits.push_back(rows);
    symmetries.each_image(rows, [&](unsigned, WindowRows image) {
      const std::size_t k = index(image);
      // From 3, which is all ones.
      residues[k / 4] &= static_cast<std::uint8_t>(~((3 - value) << (2 * (k % 4))));
    });
  };
  fill(identity_rows_on(wires), 0);
  for (std::size_t k = 0; k < orbits.size(); ++k) {
    stop_point();
    const unsigned next = (residue(residues, index(orbits[k])) + 1) % 3;
    for (unsigned move = 0; move < moves; ++move) {
      if (!allows(move)) continue;
      const WindowRows rows = rows_after(window_gates[move], orbits[k]);
      if (residue(residues, index(rows)) == 3) fill(rows, next);
    }
  }
  return residues;
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
