#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zelt::braidwerk::internal {

inline constexpr int sum_slots = 11;  ///< sums of two of four wires and more
inline constexpr std::size_t family_words = 32;

/// A slot for each slot.
using Slots = std::array<std::uint8_t, sum_slots>;

/// Sets of sums, one bit per set: a Boolean function of 11 variables, whether each slot is in the
/// set.
using SumFamily = std::array<std::uint64_t, family_words>;

/// What the family says of a set without the slot, for the set with it too.
void forget_slot(SumFamily& family, int slot);

/// Whether a set is in the result is what the family says of its image.
void draw_back(SumFamily& family, Slots image);

}  // namespace zelt::braidwerk::internal
