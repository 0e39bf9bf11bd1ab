#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <stdexcept>

#include "support/graphs.h"
#include "support/phases.h"
#include "support/rotations.h"
#include "zeltbraidwerk/zeltbraidwerk.h"

namespace {

using structures::Gate;
using synthesis::SearchEffort;

const SearchEffort few{.steps = 500, .seed = 3};

/// Whether qubit q of the operator stands on wire wires[q] behind the circuit, signs included.
bool implements(const std::vector<Gate>& circuit, const std::vector<int>& wires,
                const structures::OperatorTableau& wanted) {
  const int n = wanted.nbqbits;
  const auto made = support::tableau_of(circuit, n);
  for (int q = 0; q < n; ++q) {
    for (const char letter : {'X', 'Z'}) {
      std::string string(support::at(n), 'I');
      string[support::at(q)] = letter;
      const auto [minus, image] = support::carried(string, wanted);
      std::string moved(support::at(n), 'I');
      for (int k = 0; k < n; ++k) moved[support::at(wires[support::at(k)])] = image[support::at(k)];
      if (support::carried(string, made) != support::SignedString{minus, moved}) return false;
    }
  }
  return true;
}

TEST(PublicSearch, CliffordOperatorsAndStates) {
  std::mt19937 rng(1);
  for (const int n : {0, 1, 2, 5, 7}) {
    const auto wanted = support::tableau_of(support::random_clifford(n, 12 * n, rng), n);
    const auto device = support::line(n);
    std::vector<int> wires;
    for (const bool in_place : {false, true}) {
      EXPECT_TRUE(implements(synthesis::search_clifford_synthesis(wanted, wires, in_place, few),
                             wires, wanted));
      const auto placed =
          synthesis::search_clifford_synthesis(wanted, wires, in_place, few, &device);
      EXPECT_TRUE(implements(placed, wires, wanted));
      EXPECT_TRUE(support::runs_on(device, placed));
    }
    EXPECT_TRUE(std::ranges::is_sorted(wires));

    // Undone, every stabiliser is one of zeros.
    const auto made = support::tableau_of(synthesis::search_state_synthesis(wanted, few), n);
    for (int q = 0; q < n; ++q) {
      std::string z(support::at(n), 'I');
      z[support::at(q)] = 'Z';
      const auto [minus, image] = support::carried(z, wanted);
      const auto [other_minus, before] = support::carried(image, made.inverse());
      EXPECT_EQ(before.find_first_of("XY"), std::string::npos);
      EXPECT_EQ(minus, other_minus);
    }
  }
}

TEST(PublicSearch, PhasePolynomials) {
  support::Rng rng(2);
  const PhasePolynomial poly = support::random_polynomial(6, 14, rng);
  const auto device = support::line(6);
  for (const structures::Graph* graph : {static_cast<const structures::Graph*>(nullptr), &device}) {
    for (const bool in_place : {false, true}) {
      std::vector<int> wires;
      const auto circuit = synthesis::search_phase_synthesis(poly, wires, in_place, few, graph);
      structures::Table table(6);
      for (int q = 0; q < 6; ++q) table.bits[support::at(q * 6 + q)] = false;
      for (int q = 0; q < 6; ++q) table.bits[support::at(wires[support::at(q)] * 6 + q)] = true;
      EXPECT_EQ(support::fault(poly, circuit, table), "");
      EXPECT_TRUE(!in_place || std::ranges::is_sorted(wires));
      EXPECT_TRUE(graph == nullptr || support::runs_on(device, circuit));
    }
  }
  std::vector<int> wires;
  EXPECT_TRUE(synthesis::search_phase_synthesis({}, wires, true, few, &device).empty());
}

TEST(PublicSearch, PauliRotations) {
  std::mt19937 rng(3);
  support::PauliRows table = support::random_rows(12, 5, rng);
  const PauliRotationMap rotations = support::symbolic(table);
  std::vector<structures::Parameter> params;
  for (const auto& row : table) params.push_back(rotations.at(row));
  const auto device = support::line(5);
  for (const bool in_order : {false, true}) {
    std::vector<int> wires;
    const auto circuit =
        synthesis::search_pauli_synthesis(5, table, params, in_order, wires, true, few, &device);
    const auto unfolded = support::unfold(circuit, 5);
    EXPECT_EQ(support::fault(rotations, unfolded), "");
    EXPECT_TRUE(support::is_identity(unfolded.pulled_back));
    EXPECT_TRUE(support::runs_on(device, circuit));
    const auto freely =
        synthesis::search_pauli_synthesis(5, table, params, in_order, wires, false, few);
    EXPECT_EQ(support::fault(rotations, support::unfold(freely, 5)), "");
    EXPECT_TRUE(
        implements(support::unfold(freely, 5).clifford, wires, structures::OperatorTableau(5)));
  }
}

TEST(PublicSearch, RefusesDevicesInPieces) {
  const structures::Graph pieces(3);
  const structures::Graph small = support::line(2);
  std::vector<int> wires;
  for (const structures::Graph* device : {&pieces, &small}) {
    EXPECT_THROW(synthesis::search_clifford_synthesis(structures::OperatorTableau(3), wires, true,
                                                      few, device),
                 std::invalid_argument);
    EXPECT_THROW(
        synthesis::search_phase_synthesis(support::polynomial({"110"}), wires, true, few, device),
        std::invalid_argument);
    EXPECT_THROW(synthesis::search_pauli_synthesis(3, support::rows({"XXI"}), {{"a"}}, true, wires,
                                                   true, few, device),
                 std::invalid_argument);
  }
}

}  // namespace
