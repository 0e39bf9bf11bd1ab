#include "zeltbraidwerk/clifford/search/internal/operator_table.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/unforkable.h"

namespace zelt::braidwerk::internal {
namespace {

struct Orbit {
  WindowRows first;
  int distance;
  std::uint64_t down;
};

/// While a table is built a slot's value holds its orbit and the symmetry that leads there.
constexpr int orbit_shift = 16;

}  // namespace

/// Breadth first over one operator of each orbit, some dozens on four wires.
template <int wires>
auto OperatorTable<wires>::built() -> std::vector<Slot> {
  const Unforkable building;
  std::vector<Slot> table(slots);
  const WindowSymmetries<wires> symmetries(Outputs::anywhere, (std::uint64_t{1} << moves) - 1);
  const auto slot = [&](WindowRows rows) -> Slot& {
    const Key key = key_of(rows);
    return table[slot_of(table, key)];
  };
  std::vector<Orbit> orbits;
  const auto add = [&](WindowRows first, int distance) {
    symmetries.each_image(first, [&](unsigned element, WindowRows image) {
      Slot& of_image = slot(image);
      if (of_image.key == 0) of_image = {key_of(image), orbits.size() << orbit_shift | element};
    });
    orbits.push_back({first, distance, 0});
  };
  add(identity_rows_on(wires), 0);
  for (std::size_t k = 0; k < orbits.size(); ++k) {
    const Orbit orbit = orbits[k];
    stop_point();
    for (unsigned move = 0; move < moves; ++move) {
      const WindowRows rows = rows_after(window_gates[move], orbit.first);
      const Slot& found = slot(rows);
      if (found.key == 0) {
        add(rows, orbit.distance + 1);
      } else if (orbits[found.value >> orbit_shift].distance < orbit.distance) {
        orbits[k].down |= std::uint64_t{1} << move;
      }
    }
  }
  for (Slot& of_class : table) {
    if (of_class.key == 0) continue;
    const Orbit& orbit = orbits[of_class.value >> orbit_shift];
    const auto element = static_cast<unsigned>(of_class.value & ((1U << orbit_shift) - 1));
    of_class.value = static_cast<std::uint64_t>(orbit.distance) << distance_shift |
                     symmetries.moved(orbit.down, element);
  }
  return table;
}

template <int wires>
OperatorTable<wires>::OperatorTable() {
  constexpr std::uint32_t layout = 1;
  if constexpr (wires < 4) {
    slots_ = StoredTable(built());
  } else {
    slots_ = stored_table<Slot>("clifford-windows-4", layout, slots, built);
  }
}

template <int wires>
int OperatorTable<wires>::size() const {
  return static_cast<int>(
      std::ranges::count_if(slots_.all(), [](const Slot& slot) { return slot.key != 0; }));
}

template <int wires>
const OperatorTable<wires>& OperatorTable<wires>::shared() {
  static const OperatorTable table;
  return table;
}

template class OperatorTable<2>;
template class OperatorTable<3>;
template class OperatorTable<4>;

}  // namespace zelt::braidwerk::internal
