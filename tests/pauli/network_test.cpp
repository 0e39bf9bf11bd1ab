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

Rotations rotations_of(const PauliRows& table, int n) {
  Rotations rotations{PauliFrame::pack(table, n), {}};
  for (std::size_t r = 0; r < table.size(); ++r) {
    rotations.params.emplace_back("a" + std::to_string(r));
  }
  return rotations;
}

/// The rows in the order in which the circuit turns about them; fails where it turns otherwise.
std::vector<int> served(const PauliRows& table, const std::vector<Gate>& circuit, int n) {
  std::vector<int> order;
  for (const auto& [string, angle] : support::unfold(circuit, n).rotations) {
    const structures::Parameter plain = string.first ? angle.flip_sign() : angle;
    const int row = std::stoi(plain.expression.substr(1));
    EXPECT_EQ(string.second, text(table[at(row)]));
    order.push_back(row);
  }
  std::vector<int> sorted = order;
  std::ranges::sort(sorted);
  std::vector<int> wanted;
  for (int r = 0; r < static_cast<int>(table.size()); ++r) {
    if (text(table[at(r)]).find_first_not_of('I') != std::string::npos) wanted.push_back(r);
  }
  EXPECT_EQ(sorted, wanted);
  return order;
}

void expect_kept_order(const PauliRows& table, const std::vector<int>& order) {
  for (std::size_t k = 0; k < order.size(); ++k) {
    for (std::size_t j = 0; j < k; ++j) {
      EXPECT_FALSE(order[j] > order[k] &&
                   support::anticommute(text(table[at(order[j])]), text(table[at(order[k])])));
    }
  }
}

TEST(PauliNetworks, ServeEveryRowOnce) {
  std::mt19937 rng(1);
  for (int round = 0; round < 150; ++round) {
    const int n = 1 + round % 8;
    PauliRows table;  // different rows
    for (const auto& row : support::random_rows(static_cast<int>(rng() % 25), n, rng)) {
      if (std::ranges::find(table, row) == table.end()) table.push_back(row);
    }
    const Rotations rotations = rotations_of(table, n);

    const auto ladders = synthesise_ladders(rotations);
    EXPECT_TRUE(std::ranges::is_sorted(served(table, ladders, n)));
    EXPECT_TRUE(support::is_identity(support::unfold(ladders, n).pulled_back));
    std::ptrdiff_t wanted = 0;
    for (const auto& row : table) {
      const auto weight = std::ssize(row) - std::ranges::count(row, 0);
      wanted += weight > 0 ? 2 * (weight - 1) : 0;
    }
    EXPECT_EQ(std::ranges::count(ladders, "CNOT", &Gate::name), wanted);

    structures::Graph device = support::random_device(n, 20, rng);
    device.set_shortest_paths();
    const auto placed = synthesise_open_sets_on_graph(rotations, device);
    served(table, placed, n);
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
    expect_kept_order(table, served(table, in_order, n));
  }
}

}  // namespace
