#include "zeltbraidwerk/pauli/search/internal/block_bounds.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace zelt::braidwerk::internal;

/// Nothing is left, or a gate leads to one gate less and none to less than that: so they are the
/// fewest.
TEST(BlockBounds, AreProvenByTheirNeighbours) {
  const BlockBounds& bounds = BlockBounds::shared();
  for (int k = 0; k <= BlockBounds::operators; ++k) {
    const auto number = static_cast<BlockBounds::Number>(k);
    const bool is_done = number == BlockBounds::done || number == BlockBounds::free_end;
    for (unsigned string = 0; string < BlockBounds::strings; ++string) {
      const BlockBounds::Bound& bound = bounds.of(number)[string];
      ASSERT_EQ(bound.gates() == 0, is_done && letters_of_string(string) <= 1);
      std::uint32_t lowering = 0;
      std::uint32_t keeping = 0;
      for (int move = 0; move < BlockBounds::moves; ++move) {
        const auto& after = string_moves.after[static_cast<std::size_t>(move)];
        const int gates = bounds.of(bounds.after(number, move))[after[string]].gates();
        ASSERT_GE(gates, bound.gates() - 1);
        if (gates < bound.gates()) lowering |= 1U << move;
        if (gates <= bound.gates()) keeping |= 1U << move;
      }
      ASSERT_EQ(bound.lowering(), lowering);
      ASSERT_EQ(bound.keeping(), keeping);
      // A string of a single letter is served, and the operator alone is left.
      if (letters_of_string(string) == 1) {
        ASSERT_EQ(bound.gates(), bounds.of(number)[0].gates());
      } else {
        ASSERT_EQ(lowering == 0, bound.gates() == 0);
      }
    }
  }
}

TEST(BlockBounds, NumbersFollowTheGatesWhateverTheLabelsOfOutputs) {
  const BlockBounds& bounds = BlockBounds::shared();
  std::mt19937 random(1);
  WindowRows rows = identity_rows_on(BlockBounds::wires);
  BlockBounds::Number number = bounds.number_of(rows);
  EXPECT_EQ(number, BlockBounds::done);
  for (int k = 0; k < 10'000; ++k) {
    const std::size_t move = random() % BlockBounds::moves;
    rows = rows_through(window_gates[move], rows);
    number = bounds.after(number, static_cast<int>(move));
    const int wire = static_cast<int>(random() % BlockBounds::wires);
    const WindowRows x = rows >> (16 * wire) & 0xff;
    const WindowRows z = rows >> (16 * wire + 8) & 0xff;
    rows ^= random() % 2 == 0 ? x << (16 * wire + 8) : z << (16 * wire);
    ASSERT_EQ(bounds.number_of(rows), number);
  }
}

}  // namespace
