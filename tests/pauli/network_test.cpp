#include "zeltbraidwerk/pauli/internal/network.h"

#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/rotations.h"

namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;
using support::at;
using support::PauliRows;
using support::text;

TEST(PauliNetworks, ServeEveryRowOnce) {
  std::mt19937 rng(1);
  for (int round = 0; round < 150; ++round) {
    const int n = 1 + round % 8;
    PauliRows table;  // different rows
    for (const auto& row : support::random_rows(static_cast<int>(rng() % 25), n, rng)) {
      if (std::ranges::find(table, row) == table.end()) table.push_back(row);
    }
    const Rotations rotations = support::named(table, n);

    const auto ladders = synthesise_ladders(rotations);
    const support::Unfolded unfolded = support::unfold(ladders, n);
    EXPECT_EQ(support::fault(table, true, unfolded), "");
    EXPECT_TRUE(support::is_identity(unfolded.pulled_back));
    std::ptrdiff_t wanted = 0;
    for (const auto& row : table) {
      const auto weight = std::ssize(row) - std::ranges::count(row, 0);
      wanted += weight > 0 ? 2 * (weight - 1) : 0;
    }
    EXPECT_EQ(std::ranges::count(ladders, "CNOT", &Gate::name), wanted);

    structures::Graph device = support::random_device(n, 20, rng);
    device.set_shortest_paths();
    const auto placed = synthesise_open_sets_on_graph(rotations, device);
    EXPECT_EQ(support::fault(table, false, support::unfold(placed, n)), "");
    EXPECT_TRUE(support::runs_on(device, placed));

    // Layers: each row after those that it does not commute with, and no later than it need be.
    const auto layers = layers_in_order(rotations.frame);
    std::vector<int> layer_of(table.size());
    for (std::size_t k = 0; k < layers.size(); ++k) {
      for (const int r : layers[k]) {
        layer_of[at(r)] = static_cast<int>(k);
        int least = 0;
        for (int s = 0; s < r; ++s) {
          if (support::anticommute(text(table[at(r)]), text(table[at(s)])))
            least = std::max(least, layer_of[at(s)] + 1);
        }
        EXPECT_EQ(least, static_cast<int>(k));
      }
    }
    // A synthesis that leaves a Clifford operator: the layers after it are seen through that.
    const auto in_order = synthesise_in_order(rotations, [&](Rotations layer) {
      return synthesise_open_sets_on_graph(std::move(layer), device);
    });
    EXPECT_EQ(support::fault(table, true, support::unfold(in_order, n)), "");
  }
}

}  // namespace
