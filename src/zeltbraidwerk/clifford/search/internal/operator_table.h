#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/window_moves.h"
#include "zeltbraidwerk/clifford/search/internal/window_symmetries.h"
#include "zeltbraidwerk/search/internal/table_store.h"

namespace zelt::braidwerk::internal {

/// The fewest gates for every Clifford operator on 2 to 4 wires, up to one-qubit gates on its
/// outputs and their order, and the gates that such a circuit may begin with. On four wires these
/// are 1,523,200 classes, up to six gates each, in 32 MB, built in a quarter of a second where no
/// file has the table.
template <int wires>
class OperatorTable {
 public:
  static constexpr unsigned moves = moves_on(wires);

  OperatorTable();
  /// Built when it is asked for first.
  static const OperatorTable& shared();

  struct Entry {
    int distance;
    std::uint64_t down;  ///< moves that lead to distance - 1
  };

  Entry find(WindowRows rows) const {
    const Slot& slot = slots_[slot_of(slots_.all(), key_of(rows))];
    return {static_cast<int>(slot.value >> distance_shift),
            slot.value & ((std::uint64_t{1} << moves) - 1)};
  }
  int size() const;  ///< classes; counts them

 private:
  using Key = std::uint64_t;
  struct Slot {
    Key key = 0;  ///< 0: free
    std::uint64_t value = 0;
  };
  static constexpr int distance_shift = 56;

  /// Of the three operators that a wire's labels stand for the two smallest, in order; wires in
  /// order of these.
  static Key key_of(WindowRows rows) {
    std::array<std::uint16_t, 4> wire{};
    for (std::size_t i = 0; i < wires; ++i) {
      const auto x = static_cast<std::uint8_t>(rows >> (16 * i));
      const auto z = static_cast<std::uint8_t>(rows >> (16 * i + 8));
      const auto y = static_cast<std::uint8_t>(x ^ z);
      const std::uint8_t low = x < z ? x : z;
      const std::uint8_t high = x < z ? z : x;
      const std::uint8_t least = low < y ? low : y;
      const std::uint8_t other = low < y ? y : low;
      wire[i] = static_cast<std::uint16_t>(least << 8 | (other < high ? other : high));
    }
    const auto sort = [&](std::size_t a, std::size_t b) {
      if (b >= wires) return;
      const std::uint16_t low = wire[a] < wire[b] ? wire[a] : wire[b];
      wire[b] = wire[a] < wire[b] ? wire[b] : wire[a];
      wire[a] = low;
    };
    sort(0, 1), sort(2, 3), sort(0, 2), sort(1, 3), sort(1, 2);
    if constexpr (wires == 3) sort(0, 1);
    Key key = 0;
    for (std::size_t i = 0; i < wires; ++i) key |= Key{wire[i]} << (16 * i);
    return key;
  }

  /// Symplectic matrices over one-qubit matrices and permutations.
  static constexpr std::size_t classes = wires == 2 ? 10 : wires == 3 ? 1120 : 1523200;
  static constexpr std::size_t slots = std::bit_ceil(classes + classes / 4 + 8);

  static std::size_t slot_of(std::span<const Slot> table, Key key) {
    constexpr int shift = 64 - std::countr_zero(slots);
    auto at = static_cast<std::size_t>((key * 0x9e3779b97f4a7c15U) >> shift);
    while (table[at].key != key && table[at].key != 0) at = (at + 1) & (slots - 1);
    return at;
  }
  static std::vector<Slot> built();

  StoredTable<Slot> slots_;
};

extern template class OperatorTable<2>;
extern template class OperatorTable<3>;
extern template class OperatorTable<4>;

}  // namespace zelt::braidwerk::internal
