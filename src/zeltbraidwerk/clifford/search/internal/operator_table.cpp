#include "zeltbraidwerk/clifford/search/internal/operator_table.h"

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/unforkable.h"

namespace zelt::braidwerk::internal {
namespace {

/// Symplectic matrices over one-qubit matrices and permutations.
constexpr std::uint64_t classes[5] = {1, 1, 10, 1120, 1523200};

struct Orbit {
  WindowRows first;
  int distance;
  std::uint64_t down;
};

/// While a table is built a slot's value holds its orbit and the symmetry that leads there.
constexpr int orbit_shift = 16;

}  // namespace

template <int wires>
void OperatorTable<wires>::fill(const WindowSymmetries<wires>& symmetries, WindowRows first,
                                std::size_t orbit) {
  symmetries.each_image(first, [&](unsigned element, WindowRows image) {
    const Key key = key_of(image);
    Slot& slot = slots_[slot_of(key)];
    if (slot.key != 0) return;
    slot = {key, orbit << orbit_shift | element};
    ++size_;
  });
}

/// Breadth first over one operator of each orbit, some dozens on four wires.
template <int wires>
OperatorTable<wires>::OperatorTable()
    : slots_(std::bit_ceil(classes[wires] + classes[wires] / 4 + 8)) {
  const Unforkable building;
  shift_ = 64 - std::countr_zero(slots_.size());
  const WindowSymmetries<wires> symmetries(Outputs::anywhere, (std::uint64_t{1} << moves) - 1);
  std::vector<Orbit> orbits{{identity_rows_on(wires), 0, 0}};
  fill(symmetries, orbits[0].first, 0);
  for (std::size_t k = 0; k < orbits.size(); ++k) {
    const Orbit orbit = orbits[k];
    stop_point();
    for (unsigned move = 0; move < moves; ++move) {
      const WindowRows rows = rows_after(window_gates[move], orbit.first);
      const Slot& slot = slots_[slot_of(key_of(rows))];
      if (slot.key == 0) {
        fill(symmetries, rows, orbits.size());
        orbits.push_back({rows, orbit.distance + 1, 0});
      } else if (orbits[slot.value >> orbit_shift].distance < orbit.distance) {
        orbits[k].down |= std::uint64_t{1} << move;
      }
    }
  }
  for (Slot& slot : slots_) {
    if (slot.key == 0) continue;
    const Orbit& orbit = orbits[slot.value >> orbit_shift];
    const auto element = static_cast<unsigned>(slot.value & ((1U << orbit_shift) - 1));
    slot.value = static_cast<std::uint64_t>(orbit.distance) << distance_shift |
                 symmetries.moved(orbit.down, element);
  }
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
