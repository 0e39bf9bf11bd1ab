// Fewest gates for maps on six and seven wires: the tables of classes, and circuits by both ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "support/gate_lists.h"
#include "support/graphs.h"
#include "support/tasks.h"
#include "zeltbraidwerk/linear/search/internal/fewest_gates.h"
#include "zeltbraidwerk/linear/search/internal/map_classes.h"

namespace {

using support::at;
using support::implements;
using support::packed;
using namespace zelt::braidwerk::internal;

struct Kind {
  int wires;
  bool permuted;
};
const Kind kinds[] = {{6, true}, {6, false}, {7, true}, {7, false}};

BitMatrix renamed(const BitMatrix& m, const std::vector<int>& rows, const std::vector<int>& cols) {
  BitMatrix result(m.rows(), m.rows());
  for (int r = 0; r < m.rows(); ++r) {
    for (int c = 0; c < m.rows(); ++c) result.set(rows[at(r)], cols[at(c)], m.get(r, c));
  }
  return result;
}

TEST(MapClasses, NamesAndTurningAllGatesAroundLeaveTheClass) {
  support::Rng rng(1);
  for (const auto& [n, permuted] : kinds) {
    const MapClassFinder class_of(n, permuted);
    for (int k = 0; k < 200; ++k) {
      // Sparse ones have lines that no weight tells apart.
      const BitMatrix m = support::map_of(support::random_gates(n, k % 20, nullptr, false, rng), n);
      const std::uint64_t of = class_of(FewRows::of(m));
      const std::vector<int> names = support::shuffled(n, rng);
      const BitMatrix other = renamed(m, names, permuted ? support::shuffled(n, rng) : names);
      EXPECT_EQ(class_of(FewRows::of(other)), of);
      EXPECT_EQ(class_of(FewRows::of(inverse(m).transposed())), of);
      EXPECT_EQ(class_of(class_of.member(of)), of);
    }
  }
}

/// Distances are right where a gate changes them by one at most and a circuit has as many gates.
TEST(MapClasses, DistancesAreThoseOfShortestCircuits) {
  support::Rng rng(2);
  for (const auto& [n, permuted] : kinds) {
    const MapClasses& table = MapClasses::of(n, permuted);
    const auto distance = [&](const FewRows& m) { return table.distance(table.class_of()(m)); };
    for (int k = 0; k < 300; ++k) {
      const int gates = k % 15;
      const FewRows m =
          FewRows::of(support::map_of(support::random_gates(n, gates, nullptr, false, rng), n));
      EXPECT_LE(distance(m), gates);
      for (int c = 0; c < n; ++c) {
        for (int t = 0; t < n; ++t) {
          if (c == t) continue;
          EXPECT_LE(std::abs(distance(m.without(c, t)) - distance(m)), 1);
        }
      }
    }
  }
}

TEST(FewestGates, CircuitsHaveAsManyAsIsProven) {
  support::Rng rng(3);
  const Effort effort;
  for (const auto& [n, permuted] : kinds) {
    for (int k = 0; k < 12; ++k) {
      const int gates = 3 * k;
      const BitMatrix m = support::map_of(support::random_gates(n, gates, nullptr, false, rng), n);
      Meter meter(effort);
      const FewestGates found = fewest_gates(m, permuted, meter);
      if (n == 7 && !permuted && gates > 10 && !found.circuit) {
        EXPECT_EQ(found.least, 11);
        continue;
      }
      ASSERT_TRUE(found.circuit);
      EXPECT_TRUE(implements(*found.circuit, m.unpack(), !permuted)) << n << " wires, " << gates;
      EXPECT_EQ(found.circuit->count(), found.least);
      EXPECT_LE(found.least, gates);
    }
  }
}

TEST(FewestGates, WhatTheEffortIsNotEnoughForIsABound) {
  const Effort none = support::steps(0);
  Meter meter(none);
  // A swap of three pairs takes nine gates: one more than the table has.
  const BoolMatrix m =
      support::matrix({"010000", "100000", "000100", "001000", "000001", "000010"});
  const FewestGates found = fewest_gates(packed(m), false, meter);
  EXPECT_FALSE(found.circuit);
  EXPECT_EQ(found.least, 9);
}

}  // namespace
