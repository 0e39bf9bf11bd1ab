// Circuits turned from one map to a related one, and closed to have their outputs in place.
#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/oracles.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/facing.h"

namespace {

using support::at;
using support::implements_up_to;
using support::operator_of;
using namespace zelt::braidwerk::internal;

/// Any circuit, any permutation, and the map that they implement.
struct Known {
  FreeCircuit found;
  BoolMatrix map;

  Known(int n, support::Rng& rng) : found(n) {
    found.circuit = support::random_cnots(n, n * n / 2, rng);
    found.perm = support::shuffled(n, rng);
    const BoolMatrix m = operator_of(found.circuit);
    for (const int wire : found.perm) map.push_back(m[at(wire)]);
  }

  BitMatrix packed() const { return support::packed(map); }
};

const int sizes[] = {0, 1, 2, 3, 7, 20, 65};

TEST(Facing, CircuitsComeBackFromEveryFacing) {
  support::Rng rng(1);
  for (const int n : sizes) {
    for (int f = 0; f < 4; ++f) {
      const auto facing = static_cast<Facing>(f);
      Known known(n, rng);
      const BitMatrix m = face(known.packed(), facing);  // which faces back to the known map
      EXPECT_EQ(face(m, facing), known.packed());
      known.found.face_back(facing);
      EXPECT_TRUE(implements_up_to(known.found.circuit, known.found.perm, m.unpack()))
          << n << " qubits, facing " << f;
    }
  }
}

TEST(Facing, CircuitsComeBackFromOtherNames) {
  support::Rng rng(2);
  for (const int n : sizes) {
    Known known(n, rng);
    const Renaming renaming{support::shuffled(n, rng), support::shuffled(n, rng)};
    BoolMatrix m(at(n), BoolRow(at(n)));
    for (int r = 0; r < n; ++r) {
      for (int c = 0; c < n; ++c) {
        m[at(renaming.rows[at(r)])][at(renaming.cols[at(c)])] = known.map[at(r)][at(c)];
      }
    }
    EXPECT_EQ(renaming(BitMatrix::pack(m, n, n)), known.packed());
    known.found.rename_back(renaming);
    EXPECT_TRUE(implements_up_to(known.found.circuit, known.found.perm, m)) << n;
  }
}

TEST(Closing, PutsEveryOutputInItsPlace) {
  support::Rng rng(3);
  for (const int n : sizes) {
    const Known known(n, rng);
    const auto by_swaps = close_by_swaps(known.found);
    const auto within = close_within_gates(known.found, SeededDraw(1, 0));
    EXPECT_EQ(operator_of(by_swaps), known.map) << n;
    EXPECT_EQ(operator_of(within), known.map) << n;
    EXPECT_LE(within.gates.size(), by_swaps.gates.size()) << n;
    if (n >= 20) {
      EXPECT_LT(within.gates.size(), by_swaps.gates.size()) << n;
    }
  }
}

TEST(Closing, AGateThatSwapsIsTwoCnots) {
  const FreeCircuit found(structures::CnotCircuit(2, {{0, 1}}), {1, 0});
  const auto closed = close_within_gates(found, SeededDraw(1, 0));
  EXPECT_EQ(support::show(closed.gates), "(1,0)(0,1)");
  // Without a gate to take it on, a swap is three.
  const FreeCircuit swap(structures::CnotCircuit(2), {1, 0});
  EXPECT_EQ(close_within_gates(swap, SeededDraw(1, 0)).gates.size(), 3U);
}

}  // namespace
