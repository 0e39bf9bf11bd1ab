#include <gtest/gtest.h>

#include <random>

#include "stim/gates/gates.h"
#include "stim/stabilizers/tableau.h"
#include "zeltbraidwerk/foundations/structures.h"

namespace {

using namespace structures;
using Oracle = stim::Tableau<64>;

struct Named {
  const char* stim;
  Gate gate;
};

Named random_gate(int n, std::mt19937& rng) {
  constexpr double quarter = 1.5707963267948966;
  const auto any = [&rng](int bound) {
    return static_cast<int>(rng() % static_cast<unsigned>(bound));
  };
  const int a = any(n);
  const auto turn = [a](const char* name, double angle) {
    return Gate(name, {a}, {Parameter(angle)}, false);
  };
  const std::vector<Named> single{
      {"H", Gate::H(a)},
      {"SQRT_X", turn("RX", quarter)},
      {"SQRT_X_DAG", turn("RX", -quarter)},
      {"SQRT_Y", turn("RY", quarter)},
      {"SQRT_Y_DAG", turn("RY", -quarter)},
      {"S", turn("RZ", quarter)},
      {"S_DAG", turn("PH", -quarter)},
      {"X", Gate("X", {a})},
      {"Y", Gate("Y", {a})},
      {"Z", Gate("Z", {a})},
  };
  if (n == 1 || any(2) == 0) return single[rng() % single.size()];
  const int b = (a + 1 + any(n - 1)) % n;
  const std::vector<Named> pair{
      {"CX", Gate::CNOT(a, b)}, {"CZ", Gate::CZ(a, b)}, {"SQRT_XX", Gate("XX", {a, b})}};
  return pair[rng() % pair.size()];
}

/// The tableau of one gate, embedded.
Oracle embedded(const Named& named, int n) {
  Oracle result(static_cast<std::size_t>(n));
  std::vector<std::size_t> qubits(named.gate.qbits.begin(), named.gate.qbits.end());
  result.inplace_scatter_append(stim::GATE_DATA.at(named.stim).tableau<64>(), qubits);
  return result;
}

std::string image(const OperatorTableau& t, WeylOperator w) {
  w.conjugate_with(t);
  const auto [minus, letters] = w.to_pauli();
  return (minus ? '-' : '+') + letters;
}

std::string plain(const stim::PauliString<64>& p) {
  std::string text = p.str();
  std::replace(text.begin(), text.end(), '_', 'I');
  return text;
}

void expect_same(const OperatorTableau& t, const Oracle& oracle) {
  const int n = t.nbqbits;
  for (int q = 0; q < n; ++q) {
    ASSERT_EQ(image(t, WeylOperator::pauli_x(q, n)), plain(oracle.xs[static_cast<std::size_t>(q)]));
    ASSERT_EQ(image(t, WeylOperator::pauli_z(q, n)), plain(oracle.zs[static_cast<std::size_t>(q)]));
  }
}

TEST(StimOracle, RandomCircuitsOnBothSides) {
  std::mt19937 rng(61);
  for (const int n : {1, 2, 3, 7, 31, 70}) {
    OperatorTableau t(n), other(n);
    Oracle oracle(static_cast<std::size_t>(n)), other_oracle = oracle;
    for (int k = 0; k < 10 * n + 30; ++k) {
      const Named left = random_gate(n, rng), right = random_gate(n, rng);
      t.apply_left(left.gate);
      oracle = oracle.then(embedded(left, n));
      t.apply_right(right.gate);
      oracle = embedded(right, n).inverse().then(oracle);
      other.apply_left(right.gate);
      other_oracle = other_oracle.then(embedded(right, n));
    }
    ASSERT_NO_FATAL_FAILURE(expect_same(t, oracle)) << n;
    ASSERT_NO_FATAL_FAILURE(expect_same(t.inverse(), oracle.inverse())) << n;
    t.multiply_right(other);
    ASSERT_NO_FATAL_FAILURE(expect_same(t, other_oracle.then(oracle))) << n;
  }
}

}  // namespace
