#include <gtest/gtest.h>

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/state_vector.h"
#include "zeltbraidwerk/circuit/three_wire/internal/cosine_sine.h"
#include "zeltbraidwerk/circuit/three_wire/internal/three_wire.h"
#include "zeltbraidwerk/circuit/three_wire/internal/three_wire_windows.h"

namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;
using Complex = std::complex<double>;
using Circuit = std::vector<Gate>;
using Rng = std::mt19937;

template <int n>
Eigen::Matrix<Complex, n, n> random_unitary(Rng& rng) {
  std::normal_distribution<double> normal;
  Eigen::Matrix<Complex, n, n> m;
  for (Complex& entry : m.reshaped()) entry = {normal(rng), normal(rng)};
  return Eigen::HouseholderQR<Eigen::Matrix<Complex, n, n>>(m).householderQ();
}

/// By states: column k is what becomes of basis state k.
Matrix8cd matrix(const Circuit& circuit) {
  Matrix8cd m;
  for (int k = 0; k < 8; ++k) {
    support::State state(8);
    state[static_cast<std::size_t>(k)] = 1;
    state = support::after(circuit, 3, state);
    for (int row = 0; row < 8; ++row) m(row, k) = state[static_cast<std::size_t>(row)];
  }
  return m;
}

int pairs_of(const Circuit& circuit) {
  return static_cast<int>(
      std::ranges::count_if(circuit, [](const Gate& gate) { return gate.qbits.size() == 2; }));
}

int rotations_of(const Circuit& circuit) {
  return static_cast<int>(std::ranges::count_if(circuit, [](const Gate& gate) {
    return !gate.params.empty() &&
           std::abs(std::remainder(gate.params[0].value, std::acos(0.0))) > 1e-9;
  }));
}

Matrix8cd blocks(const Eigen::Matrix4cd& zero, const Eigen::Matrix4cd& one) {
  Matrix8cd m = Matrix8cd::Zero();
  m.topLeftCorner<4, 4>() = zero;
  m.bottomRightCorner<4, 4>() = one;
  return m;
}

/// CNOTs or CZ, with one-wire gates before each: kind 0 Clifford gates, 1 multiples of pi/4,
/// 2 any angles.
Circuit random_circuit(int n, int pairs, int kind, Rng& rng) {
  const std::vector<std::string> cliffords{"H", "S", "D-S", "X"};
  const std::vector<std::string> axes{"RX", "RY", "RZ"};
  std::uniform_real_distribution<double> angle(-3, 3);
  Circuit circuit;
  for (int k = 0; k < pairs; ++k) {
    const int a = static_cast<int>(rng() % static_cast<unsigned>(n));
    const int b = (a + 1 + static_cast<int>(rng() % static_cast<unsigned>(n - 1))) % n;
    for (const int wire : {a, b, a}) {
      const double by = kind == 2 ? angle(rng) : static_cast<double>(rng() % 8) * std::atan(1.0);
      const std::string& axis = axes[rng() % 3];
      circuit.push_back(kind == 0 ? Gate(cliffords[rng() % 4], {wire})
                                  : Gate(axis, {wire}, {structures::Parameter(by)}, axis == "RZ"));
    }
    circuit.push_back(rng() % 4 == 0 ? Gate::CZ(a, b) : Gate::CNOT(a, b));
  }
  return circuit;
}

/// Operators in which sines, cosines, and eigenvalues are equal, 0 or nearly so.
std::vector<Matrix8cd> operators(Rng& rng) {
  const Matrix8cd identity = Matrix8cd::Identity();
  const Eigen::Matrix4cd plain = Eigen::Matrix4cd::Identity();
  std::vector<Matrix8cd> all{identity, blocks(plain, -plain), blocks(plain, random_unitary<4>(rng)),
                             blocks(random_unitary<4>(rng), random_unitary<4>(rng)),
                             matrix({Gate("X", {0})}) * blocks(plain, random_unitary<4>(rng))};
  Matrix8cd toffoli = identity;
  toffoli.row(6).swap(toffoli.row(7));
  all.push_back(toffoli);
  Matrix8cd phases = identity;
  for (int k = 0; k < 8; ++k) phases(k, k) = std::polar(1.0, k * k * 0.3);
  all.push_back(phases);
  const Matrix8cd flips = matrix({Gate("X", {0}), Gate("Z", {1})});
  for (const double angle : {1e-13, 1e-9, 1e-5, 0.4, std::atan(1.0), std::acos(0.0) - 1e-9}) {
    const Matrix8cd turn = std::cos(angle) * identity + Complex(0, std::sin(angle)) * flips;
    all.push_back(turn);
    all.push_back(blocks(random_unitary<4>(rng), plain) * turn);
    all.push_back(turn * blocks(plain, random_unitary<4>(rng)) * turn.transpose());
  }
  for (const int kind : {0, 1, 2}) {
    for (int pairs = 1; pairs < 20; pairs += 3) {
      all.push_back(matrix(random_circuit(3, pairs, kind, rng)));
    }
  }
  for (int k = 0; k < 5; ++k) all.push_back(random_unitary<8>(rng));
  return all;
}

TEST(ThreeWire, circuits_of_any_operator) {
  Rng rng(1);
  int number = 0;
  for (const Matrix8cd& wanted : operators(rng)) {
    const std::string what = "operator " + std::to_string(number++);
    const auto made = three_wire_circuit(wanted, {20, 0, 0}, false);
    ASSERT_TRUE(made) << what;
    EXPECT_LE(pairs_of(made->gates), 19) << what;
    EXPECT_LE((matrix(made->gates) * std::polar(1.0, made->phase) - wanted).norm(), 1e-10) << what;
    EXPECT_FALSE(three_wire_circuit(wanted, {pairs_of(made->gates), 99, 99}, false)) << what;

    const auto [left, angles, right] = cosine_sine(wanted);
    const Eigen::Matrix4cd cosines = angles.array().cos().matrix().cast<Complex>().asDiagonal();
    const Eigen::Matrix4cd sines = angles.array().sin().matrix().cast<Complex>().asDiagonal();
    Matrix8cd middle;
    middle << cosines, -sines, sines, cosines;
    EXPECT_LE((blocks(left[0], left[1]) * middle * blocks(right[0], right[1]) - wanted).norm(),
              1e-13)
        << what;
  }
}

TEST(ThreeWire, few_gates_for_structured_operators) {
  Rng rng(2);
  const Eigen::Matrix4cd plain = Eigen::Matrix4cd::Identity();
  const auto count = [](const Matrix8cd& unitary) {
    return pairs_of(three_wire_circuit(unitary, {20, 0, 0}, false)->gates);
  };
  EXPECT_EQ(count(Matrix8cd::Identity()), 0);
  EXPECT_EQ(count(matrix({Gate::CNOT(2, 0)})), 1);
  EXPECT_LE(count(blocks(plain, random_unitary<4>(rng))), 9);
  EXPECT_LE(count(blocks(random_unitary<4>(rng), random_unitary<4>(rng))), 9);
}

TEST(ThreeWire, nothing_for_what_is_not_unitary) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double scale : {0.0, 1.1, nan}) {
    EXPECT_FALSE(three_wire_circuit(Matrix8cd::Identity() * scale, {99, 0, 0}, false)) << scale;
  }
}

TEST(ThreeWireWindows, keep_the_operator_and_take_fewer_gates) {
  Rng rng(3);
  for (const int n : {3, 4, 5}) {
    for (const int pairs : {0, 5, 25, 80}) {
      for (const bool keep : {false, true}) {
        const std::string what = std::to_string(n) + " wires, " + std::to_string(pairs);
        const Circuit circuit = random_circuit(n, pairs, 2, rng);
        const WindowResult found = three_wire_windows(circuit, {keep});
        EXPECT_EQ(pairs_of(found.circuit) < pairs, !found.log.empty()) << what;
        if (keep) {
          EXPECT_LE(rotations_of(found.circuit), rotations_of(circuit)) << what;
        } else if (n == 3 && pairs > 19) {
          EXPECT_LE(pairs_of(found.circuit), 19) << what;
        }
        const support::State state = support::random_state(n, rng);
        EXPECT_LE(
            support::distance(support::after(found.circuit, n, state),
                              support::after(circuit, n, state), std::polar(1.0, found.phase)),
            1e-9)
            << what;
      }
    }
  }
}

TEST(ThreeWireWindows, blocks_among_other_gates) {
  // A block on wires 1 to 3 between gates that join these to others, and one with a symbol in it.
  Rng rng(4);
  Circuit circuit{Gate::CNOT(0, 1), Gate::CNOT(3, 4)};
  Circuit block = random_circuit(3, 40, 2, rng);
  for (Gate& gate : block) {
    for (int& wire : gate.qbits) ++wire;
  }
  circuit.insert(circuit.end(), block.begin(), block.end());
  circuit.push_back(Gate::CNOT(0, 1));
  circuit.push_back(Gate::CNOT(2, 0));
  // The first gates of the block may go to the blocks before.
  EXPECT_LE(pairs_of(three_wire_windows(circuit, {}).circuit), 4 + 19 + 4);

  BitGraph line(5);
  for (int q = 0; q < 4; ++q) line.join(q, q + 1);
  EXPECT_TRUE(three_wire_windows(circuit, {false, 1, &line}).log.empty());

  const Gate symbol("RZ", {2}, {structures::Parameter("t")}, true);
  circuit.insert(circuit.begin() + 80, symbol);
  const Circuit kept = three_wire_windows(circuit, {}).circuit;
  EXPECT_EQ(std::ranges::count_if(kept,
                                  [](const Gate& gate) {
                                    return !gate.params.empty() && gate.params[0].is_abstract;
                                  }),
            1);
}

}  // namespace
