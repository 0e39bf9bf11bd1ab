#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zelt::braidwerk::internal {

/// What the gates do to the rows that stand for labels 1 and 2 (X and Z) on each of two places. A
/// CNOT has label 2 on its control and label 1 on its target: row 1 of the target goes to that of
/// the control, row 2 of the control to that of the target. Any Clifford gate has two labels, and
/// what it does to the other labels is to multiply them by these two.
enum class PlaneGates : std::uint8_t { cnots, cliffords };

/// A gate on the four rows of two places, those of the first one first.
template <class Sum>
constexpr void play(PlaneGates gates, int a, int b, std::array<Sum, 4>& rows) {
  Sum of_a{}, of_b{};
  for (std::size_t k = 0; k < 2; ++k) {
    if ((a >> k & 1) != 0) of_a ^= rows[k];
    if ((b >> k & 1) != 0) of_b ^= rows[2 + k];
  }
  const Sum both = of_a ^ of_b;
  for (std::size_t k = 0; k < 4; ++k) {
    const int label = static_cast<int>(k % 2) + 1;
    if (label == (k < 2 ? a : b)) continue;
    rows[k] ^= gates == PlaneGates::cliffords ? both : k < 2 ? of_b : of_a;
  }
}

/// A way to split what the planes of two neighbours span.
struct Split {
  std::array<unsigned, 4> rows{1, 2, 4,
                               8};  ///< what is on these after the gates, a bit for each before
  int count = 0;
  std::array<std::array<int, 2>, 3> gates{};  ///< labels on both places, each at its time

  constexpr std::array<unsigned, 3> later() const { return {rows[2], rows[3], rows[2] ^ rows[3]}; }
  /// A set of three.
  constexpr unsigned later_plane() const {
    return 1U << rows[2] | 1U << rows[3] | 1U << (rows[2] ^ rows[3]);
  }
};

/// The one without gates first.
template <std::size_t size>
constexpr std::array<Split, size> all_splits(PlaneGates gates) {
  std::array<Split, size> splits;
  std::size_t count = 1;
  for (std::size_t k = 0; k < count; ++k) {
    for (int gate = 0; gate < 9 && count < size; ++gate) {
      const int a = 1 + gate / 3;
      const int b = 1 + gate % 3;
      if (gates == PlaneGates::cnots && a + b != 3) continue;
      Split next = splits[k];
      play(gates, a, b, next.rows);
      next.gates[static_cast<std::size_t>(next.count++)] = {a, b};
      bool known = false;
      for (std::size_t m = 0; m < count; ++m) {
        known = known || splits[m].later_plane() == next.later_plane();
      }
      if (!known) splits[count++] = next;
    }
  }
  return splits;
}

inline constexpr auto splits_by_cnots = all_splits<6>(PlaneGates::cnots);
inline constexpr auto splits_by_cliffords = all_splits<20>(PlaneGates::cliffords);

inline std::span<const Split> splits_by(PlaneGates gates) {
  if (gates == PlaneGates::cnots) return splits_by_cnots;
  return splits_by_cliffords;
}

/// Of the levels 0 to 3, by those in the later plane: twice the inversions, and one more where the
/// lowest is in the earlier.
constexpr int disorder(unsigned later) {
  int twice = (later & 1) != 0 ? 0 : 1;
  for (unsigned high = 1; high < 4; ++high) {
    if ((later >> high & 1) != 0) twice += 2 * std::popcount(~later & ((1U << high) - 1));
  }
  return twice;
}

}  // namespace zelt::braidwerk::internal
