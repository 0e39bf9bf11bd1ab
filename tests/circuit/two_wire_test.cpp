#include "zeltbraidwerk/circuit/two_wire/internal/two_wire.h"

#include <gtest/gtest.h>

#include <Eigen/QR>
#include <cmath>
#include <complex>
#include <map>
#include <numbers>
#include <random>
#include <string>

#include "support/dense.h"
#include "zeltbraidwerk/circuit/two_wire/internal/one_wire.h"

namespace {

using namespace zelt::braidwerk::internal;
using Eigen::Matrix2cd;
using Eigen::Matrix4cd;
using Complex = std::complex<double>;
using Circuit = std::vector<structures::Gate>;
using Rng = std::mt19937;
using support::turn;
constexpr double pi = std::numbers::pi;
constexpr std::array<int, 4> most_rotations{6, 10, 14, 15};

Circuit named(const std::vector<PlaceGate>& gates) {
  Circuit circuit;
  for (const PlaceGate& gate : gates) circuit.push_back(named_gate(gate, 0, 1));
  return circuit;
}

Matrix4cd matrix(const Circuit& circuit) {
  const support::Dense u = support::unitary(circuit, 2);
  return Eigen::Map<const Eigen::Matrix<Complex, 4, 4, Eigen::RowMajor>>(u.entries.data());
}

template <int n>
Eigen::Matrix<Complex, n, n> haar(Rng& rng) {
  std::normal_distribution<double> normal;
  Eigen::Matrix<Complex, n, n> m;
  for (Complex& entry : m.reshaped()) entry = {normal(rng), normal(rng)};
  const Eigen::HouseholderQR<Eigen::Matrix<Complex, n, n>> qr(m);
  Eigen::Matrix<Complex, n, n> q = qr.householderQ();
  const auto diagonal = qr.matrixQR().diagonal();
  for (int k = 0; k < n; ++k) q.col(k) *= diagonal[k] / std::abs(diagonal[k]);
  return q;
}

Matrix4cd product(Rng& rng) {
  return kronecker(haar<2>(rng), haar<2>(rng));
}

/// exp(i x X x X), and the same of Y and Z.
Matrix4cd interaction(double x, double y, double z) {
  Matrix4cd product = Matrix4cd::Identity();
  for (const auto& [letters, angle] : {std::pair("XX", x), {"YY", y}, {"ZZ", z}}) {
    const support::Dense u = support::rotation(letters, -2 * angle);
    product *= Eigen::Map<const Eigen::Matrix<Complex, 4, 4, Eigen::RowMajor>>(u.entries.data());
  }
  return product;
}

/// Checks the circuit of a matrix by states; returns its counts.
GateCounts check(const Matrix4cd& wanted, int cnots, const std::string& what) {
  const auto found = two_wire_circuit(wanted);
  EXPECT_TRUE(found.has_value()) << what;
  if (!found) return {};
  const Matrix4cd made = matrix(named(found->gates)) * std::polar(1.0, found->phase);
  EXPECT_LE((made - wanted).norm(), 1e-10) << what;
  const GateCounts counts = counts_of(found->gates);
  if (cnots >= 0) {
    EXPECT_EQ(counts.two_wire, cnots) << what;
  }
  EXPECT_EQ(counts.two_wire, cnots_needed(wanted)) << what;
  EXPECT_LE(counts.rotations, most_rotations[static_cast<std::size_t>(counts.two_wire)]) << what;
  return counts;
}

struct Case {
  std::string name;
  Matrix4cd matrix;
  int cnots;
  int rotations;  // at most
};

std::vector<Case> special_cases() {
  const Matrix4cd cnot = matrix({structures::Gate::CNOT(0, 1)});
  const Matrix4cd swap = interaction(pi / 4, pi / 4, pi / 4);
  std::vector<Case> cases{
      {"identity", Matrix4cd::Identity(), 0, 0},
      {"CNOT", cnot, 1, 0},
      {"CNOT from 1 to 0", matrix({structures::Gate::CNOT(1, 0)}), 1, 0},
      {"CZ", matrix({structures::Gate::CZ(0, 1)}), 1, 0},
      {"SWAP", swap, 3, 0},
      {"iSWAP", interaction(pi / 4, pi / 4, 0), 2, 0},
      {"root of SWAP", interaction(pi / 8, pi / 8, pi / 8), 3, 3},
      {"inverse root of SWAP", interaction(-pi / 8, -pi / 8, -pi / 8), 3, 3},
      {"root of iSWAP", interaction(pi / 8, pi / 8, 0), 2, 2},
      {"B", interaction(pi / 4, pi / 8, 0), 2, 1},
      {"one wire", kronecker(matrix_of(rotation_about(0, 0.3)), Matrix2cd::Identity()), 0, 1},
  };
  for (const double power : {0.5, 0.25, -0.5, 0.1, 1e-3, 1e-6, 1e-9}) {
    Matrix4cd phase = Matrix4cd::Identity();
    phase(3, 3) = std::polar(1.0, pi * power);
    cases.push_back({"CZ to the power " + std::to_string(power), phase, 2, 3});
    const double half = pi * power;
    Matrix4cd turn = Matrix4cd::Identity();
    turn.bottomRightCorner<2, 2>() = matrix_of(rotation_about(1, half));
    cases.push_back({"controlled RY, power " + std::to_string(power), turn, 2, 2});
  }
  return cases;
}

TEST(TwoWireCircuit, qubit_0_is_the_first_factor_and_gates_act_in_time_order) {
  // No symmetry exchanges anything.
  const Matrix2cd first = matrix_of(rotation_about(0, 0.3));
  const Matrix2cd last = matrix_of(rotation_about(2, 0.7));
  const Circuit given{turn("RX", 0, 0.3), structures::Gate::CNOT(0, 1), turn("RZ", 1, 0.7)};
  const Matrix4cd wanted = kronecker(Matrix2cd::Identity(), last) * matrix({given[1]}) *
                           kronecker(first, Matrix2cd::Identity());
  EXPECT_LE((matrix(given) - wanted).norm(), 1e-15);
  std::vector<PlaceGate> gates;
  for (const auto& gate : given) {
    gates.push_back(*place_gate(gate));
    if (!gates.back().two_wire()) gates.back().place = static_cast<std::uint8_t>(gate.qbits[0]);
  }
  EXPECT_LE((matrix_of(gates) - wanted).norm(), 1e-15);
  EXPECT_EQ(check(wanted, 1, "example").rotations, 2);
}

TEST(TwoWireCircuit, special_operators_take_few_gates) {
  for (const Case& c : special_cases()) {
    EXPECT_LE(check(c.matrix, c.cnots, c.name).rotations, c.rotations) << c.name;
  }
}

TEST(TwoWireCircuit, all_cliffords_take_no_rotation) {
  // Grown from the generators; equal up to phase where one column's ratio of entries is.
  std::vector<Matrix4cd> generators;
  for (const int q : {0, 1}) {
    generators.push_back(matrix({structures::Gate::H(q)}));
    generators.push_back(matrix({structures::Gate::S(q)}));
  }
  generators.push_back(matrix({structures::Gate::CNOT(0, 1)}));
  const auto key = [](Matrix4cd m) {
    Complex first = 0;
    for (const Complex entry : m.reshaped()) {
      if (std::abs(first) < 0.1) first = entry;
    }
    m *= std::conj(first) / std::abs(first);
    std::string text;
    for (const Complex entry : m.reshaped()) {
      text += static_cast<char>('a' + std::lround(4 * entry.real() + 8));
      text += static_cast<char>('a' + std::lround(4 * entry.imag() + 8));
    }
    return text;
  };
  std::vector<Matrix4cd> all{Matrix4cd::Identity()};
  std::map<std::string, int> seen{{key(all[0]), 0}};
  std::map<int, int> by_cnots;
  for (std::size_t k = 0; k < all.size(); ++k) {
    for (const Matrix4cd& generator : generators) {
      const Matrix4cd next = generator * all[k];
      if (seen.emplace(key(next), 0).second) all.push_back(next);
    }
    const GateCounts counts = check(all[k], -1, "Clifford " + std::to_string(k));
    EXPECT_EQ(counts.rotations, 0) << k;
    ++by_cnots[counts.two_wire];
  }
  EXPECT_EQ(by_cnots, (std::map<int, int>{{0, 576}, {1, 5184}, {2, 5184}, {3, 576}}));
}

TEST(TwoWireCircuit, random_operators_between_random_gates) {
  Rng rng(1);
  std::uniform_real_distribution<double> angle(-pi, pi);
  for (int round = 0; round < 100000; ++round) {
    const std::string what = "round " + std::to_string(round);
    if (round % 50 != 0) {
      check(haar<4>(rng), 3, what);
      continue;
    }
    check(product(rng), 0, what);
    check(product(rng) * interaction(pi / 4, 0, 0) * product(rng), 1, what);
    check(product(rng) * interaction(angle(rng), 0, 0) * product(rng), 2, what);
    check(product(rng) * interaction(angle(rng), angle(rng), 0) * product(rng), 2, what);
    check(product(rng) * interaction(pi / 4, pi / 4, pi / 4) * product(rng), 3, what);
  }
}

TEST(TwoWireCircuit, nearly_special_operators) {
  Rng rng(2);
  std::vector<Case> cases = special_cases();
  for (int k = 0; k < 40; ++k) {
    cases.push_back({"product", product(rng), 0, 6});
    const Matrix4cd left = product(rng);
    const double x = 0.1 + 0.01 * k;
    cases.push_back({"x = y", left * interaction(x, x, 0) * product(rng), 2, 14});
    cases.push_back({"x = y = z", left * interaction(x, x, x) * product(rng), 3, 15});
    cases.push_back({"one CNOT", left * interaction(0, 0, pi / 4) * product(rng), 1, 10});
    cases.push_back({"wall", left * interaction(pi / 4, x, -x) * product(rng), 3, 15});
  }
  for (const Case& c : cases) {
    for (int exponent = 6; exponent <= 16; ++exponent) {
      const double small = std::pow(10.0, -exponent);
      const std::string what = c.name + ", off by 1e-" + std::to_string(exponent);
      const Matrix4cd off = interaction(small, -0.7 * small, 0.3 * small);
      check(c.matrix * off, -1, what);
      check(off * product(rng) * c.matrix * off, -1, what);
      const Matrix2cd turn = matrix_of(rotation_about(exponent % 3, small));
      check(kronecker(turn, turn) * c.matrix * kronecker(turn, Matrix2cd::Identity()), -1, what);
      if (exponent >= 12) {
        EXPECT_EQ(cnots_needed(c.matrix * off), cnots_needed(c.matrix)) << what;
      }
    }
  }
}

TEST(TwoWireCircuit, refuses_what_is_no_unitary) {
  EXPECT_FALSE(two_wire_circuit(Matrix4cd::Zero()));
  EXPECT_FALSE(two_wire_circuit(Matrix4cd::Ones()));
  EXPECT_FALSE(two_wire_circuit(Matrix4cd::Constant(std::nan(""))));
  EXPECT_FALSE(two_wire_circuit(Matrix4cd::Identity() * 1.1));
}

TEST(OneWireForm, fewest_rotations_and_at_most_three_gates) {
  Rng rng(3);
  std::uniform_real_distribution<double> angle(-pi, pi);
  const auto any = [&rng](int below) {
    return static_cast<int>(rng() % static_cast<unsigned>(below));
  };
  for (int round = 0; round < 20000; ++round) {
    // Quarter turns with up to two others between, at times hardly more than nothing.
    const int rotations = round % 4;
    Quaternion turn = Quaternion::Identity();
    int made = 0;
    for (int k = 0; k < 9; ++k) {
      const bool other = k % 3 == 1 && made < rotations;
      double by = any(4) * pi / 2;
      if (other) by = round % 3 == 0 ? angle(rng) * 1e-7 : angle(rng);
      made += other;
      turn = rotation_about(any(3), by) * turn;
    }
    const OneWireForm form = one_wire_form(turn, 0);
    EXPECT_LE(form.rotations, rotations) << round;
    EXPECT_LE(form.size, form.rotations < 2 ? 2 : 3) << round;
    Quaternion back = Quaternion::Identity();
    for (const PlaceGate& gate : form) back = quaternion_of(gate) * back;
    EXPECT_NEAR(std::abs(back.dot(turn)), 1, 1e-14) << round;
    EXPECT_LE((back.conjugate() * turn).vec().norm(), 1e-11) << round;
  }
}

}  // namespace
