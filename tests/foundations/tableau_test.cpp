#include <gtest/gtest.h>

#include <random>

#include "support/dense.h"
#include "support/digest.h"
#include "support/oracles.h"
#include "zeltbraidwerk/foundations/structures.h"

namespace {

using namespace structures;
using support::at;
using support::Dense;
using support::pauli;
using support::turn;
using support::unitary;
using Exponents = std::vector<unsigned char>;
using Rng = std::mt19937;

constexpr double quarter = std::numbers::pi / 2;

/// The Pauli operator of exponents (z of each qubit, x of each qubit): i^(z x) X^x Z^z a qubit.
Dense weyl(const Exponents& v) {
  Dense m = Dense::identity(1);
  const std::size_t n = v.size() / 2;
  for (std::size_t q = 0; q < n; ++q) {
    Dense factor = Dense::identity(2) * std::pow(Dense::Entry(0, 1), v[q] * v[n + q]);
    for (int k = 0; k < v[n + q]; ++k) factor = factor * pauli("X");
    for (int k = 0; k < v[q]; ++k) factor = factor * pauli("Z");
    m = m.kron(factor);
  }
  return m;
}

std::string digits(const Exponents& entries) {
  std::string text;
  for (const unsigned char entry : entries) text += std::to_string(entry);
  return text;
}

/// A tableau holds U when it sends every Pauli string P to U P U-dagger.
void expect_operator(const OperatorTableau& t, const Dense& u) {
  const int n = t.nbqbits;
  for (int code = 0; code < 1 << (2 * n); ++code) {
    std::string letters;
    for (int q = 0; q < n; ++q) letters += "IXYZ"[code >> (2 * q) & 3];
    WeylOperator w(letters);
    w.conjugate_with(t);
    const auto [minus, result] = w.to_pauli();
    ASSERT_TRUE((u * pauli(letters) * u.dagger()).near(pauli(result) * (minus ? -1.0 : 1.0)))
        << letters << " -> " << (minus ? '-' : '+') << result;
  }
}

TEST(GateMatrices, ConjugateEveryExponentVectorExactly) {
  const Gate xx("XX", {0, 1});
  struct Case {
    const Exponents& matrix;
    const char* entries;
    Dense u;
  };
  for (const Case& c : {
           Case{CNOT, "1300010000100011", unitary(Gate::CNOT(0, 1), 2)},
           Case{CZ, "1001011000100001", unitary(Gate::CZ(0, 1), 2)},
           Case{XX, "3000030011301103", unitary(xx, 2)},
           Case{XX_INV, "3000030033303303", unitary(xx, 2).dagger()},
           Case{H, "0130", unitary(Gate::H(0), 1)},
           Case{RZP, "1101", unitary(turn("RZ", 0, quarter), 1)},
           Case{RZM, "1301", unitary(turn("RZ", 0, -quarter), 1)},
           Case{RXP, "3013", unitary(turn("RX", 0, quarter), 1)},
           Case{RXM, "3033", unitary(turn("RX", 0, -quarter), 1)},
           Case{RYP, "0132", unitary(turn("RY", 0, quarter), 1)},
           Case{RYM, "2310", unitary(turn("RY", 0, -quarter), 1)},
           Case{X, "1021", pauli("X")},
           Case{Y, "3223", pauli("Y")},
           Case{Z, "1201", pauli("Z")},
       }) {
    EXPECT_EQ(digits(c.matrix), c.entries);
    const std::size_t k = c.u.size;  // 2 for one qubit, 4 for two: as many as exponents
    for (unsigned code = 0; code < 1u << (2 * k); ++code) {
      Exponents v, image(k);
      for (std::size_t t = 0; t < k; ++t) v.push_back(code >> (2 * t) & 3);
      for (std::size_t e = 0; e < k * k; ++e) {
        image[e / k] = (image[e / k] + c.matrix[e] * v[e % k]) & 3;
      }
      ASSERT_TRUE((c.u * weyl(v) * c.u.dagger()).near(weyl(image))) << c.entries << digits(v);
    }
  }
}

TEST(WeylOperator, LettersExponentsAndSigns) {
  for (unsigned char z = 0; z < 4; ++z) {
    for (unsigned char x = 0; x < 4; ++x) {
      WeylOperator w("I");
      w.data = {0, z, x};
      const auto [minus, letter] = w.to_pauli();
      EXPECT_TRUE(weyl({z, x}).near(pauli(letter) * (minus ? -1.0 : 1.0))) << +z << ' ' << +x;
    }
  }
  EXPECT_EQ(WeylOperator("XZYI?").to_string(), "( 0 | 0 1 3 0 0 |1 0 3 0 0 )");
  EXPECT_EQ(WeylOperator("XZYI?").to_pauli(), std::pair(false, std::string("XZYII")));
  EXPECT_EQ(WeylOperator("").data, Exponents{0});
  EXPECT_EQ(WeylOperator("").to_pauli(), std::pair(false, std::string()));
  EXPECT_EQ(WeylOperator::pauli_z(1, 3), WeylOperator("IZI"));
  EXPECT_EQ(WeylOperator::pauli_x(0, 2), WeylOperator("XI"));
  WeylOperator two("II");
  two.data = {0, 1, 1, 2, 2};
  EXPECT_EQ(two.to_pauli(), std::pair(false, std::string("ZZ")));
  two.data = {0, 1, 1, 2, 0};
  EXPECT_EQ(two.to_pauli(), std::pair(true, std::string("ZZ")));
}

TEST(OperatorTableau, UpdatesKeepTheirEntries) {
  Rng rng(51);
  support::Digest digest;
  const auto entries = [&rng](std::size_t count) {
    Exponents m(count);
    for (unsigned char& entry : m) entry = rng() & 3;
    return m;
  };
  for (const int n : {3, 64, 130}) {  // 130 is more columns than one stretch
    const std::size_t size = 2 * at(n) + 1;
    for (std::size_t k = 0; k <= 6; ++k) {
      std::vector<int> idx;
      while (idx.size() < k) {
        const int position = static_cast<int>(rng() % size);
        if (std::find(idx.begin(), idx.end(), position) == idx.end()) idx.push_back(position);
      }
      const Exponents g = entries(k * k);
      Exponents left = entries(size * size);
      Exponents right = left;
      mult_left(left, n, g, idx);
      mult_right(right, n, g, idx);
      digest.add(left, right, idx);
    }
  }
  EXPECT_EQ(digest.text(), "1b56a43c245c7e2b");
}

/// Every gate that both sides take, at the angles that both sides take.
std::vector<Gate> clifford_gates(int a, int b, int c) {
  std::vector<Gate> gates{Gate::CNOT(a, b),      Gate::CZ(a, b),     Gate("CZ", {b, c}), Gate::H(a),
                          Gate("XX", {a, b, c}), Gate("XX", {c, a}), Gate("XX", {a})};
  for (const char* name : {"S", "D-S", "X", "Y", "Z"}) gates.push_back(Gate(name, {a}));
  for (const char* name : {"RX", "RY", "RZ", "PH"}) {
    for (const int turns : {0, 1, -1, 2, -2}) gates.push_back(turn(name, b, turns * quarter));
  }
  return gates;
}

TEST(OperatorTableau, GatesByNameOnBothSides) {
  Rng rng(52);
  for (const std::vector<int>& q : {std::vector{0, 1, 2}, {2, 0, 1}, {1, 2, 0}}) {
    for (const Gate& gate : clifford_gates(q[0], q[1], q[2])) {
      OperatorTableau t(3);
      Dense u = Dense::identity(8);
      const auto left = [&](const Gate& g) { t.apply_left(g), u = unitary(g, 3) * u; };
      const auto right = [&](const Gate& g) { t.apply_right(g), u = u * unitary(g, 3).dagger(); };
      const auto others = clifford_gates(1, 2, 0);
      for (int k = 0; k < 5; ++k) {
        left(others[rng() % others.size()]);
        right(others[rng() % others.size()]);
      }
      left(gate);
      ASSERT_NO_FATAL_FAILURE(expect_operator(t, u)) << gate;
      right(gate);
      ASSERT_NO_FATAL_FAILURE(expect_operator(t, u)) << gate;
    }
  }
}

TEST(OperatorTableau, SwapsAndProducts) {
  OperatorTableau left(3), right(3);
  for (OperatorTableau* t : {&left, &right}) {
    t->cnot_left(0, 1);
    t->rz_plus_left(2);
  }
  left.swap_left(0, 2);
  right.swap_right(0, 2);
  const Dense u = unitary({Gate::CNOT(0, 1), Gate("S", {2})}, 3);
  const Dense swap = unitary({Gate::CNOT(0, 2), Gate::CNOT(2, 0), Gate::CNOT(0, 2)}, 3);
  expect_operator(left, swap * u);
  expect_operator(right, u * swap);
  left.multiply_right(right);
  expect_operator(left, swap * u * u * swap);
  left = right;
  left.multiply_right(left);
  expect_operator(left, u * swap * u * swap);
}

TEST(OperatorTableau, AnglesAndRefusals) {
  const auto message = [](auto&& call) -> std::string {
    try {
      call();
    } catch (const std::logic_error& error) {
      return error.what();
    }
    return "";
  };
  const std::string bad_name = "Attempt to apply non-Clifford gate";
  const std::string bad_angle = "Non-clifford rotation angle";
  struct Case {
    Gate gate;
    std::string left, right;
  };
  OperatorTableau t(2);
  t.h_left(0);
  const OperatorTableau before = t;
  for (const Case& c : {
           Case{turn("RX", 0, 0.3), bad_angle, bad_angle},
           Case{turn("RZ", 0, quarter + 2e-5), bad_angle, bad_angle},
           Case{turn("PH", 0, std::nan("")), bad_angle, bad_angle},
           Case{Gate("T", {0}), bad_name, bad_name},
           Case{Gate("I", {0}), bad_name, ""},
           Case{Gate("S*", {0}), bad_name, ""},
           Case{Gate("RY", {0}, {Parameter("t")}, false), "", ""},
           Case{turn("RZ", 0, 4 * quarter), "", bad_angle},
           Case{turn("RY", 0, -8 * quarter - 9e-6), "", bad_angle},
           Case{turn("RY", 0, 9e-6), "", ""},
       }) {
    EXPECT_EQ(message([&] { t.apply_left(c.gate); }), c.left) << c.gate;
    EXPECT_EQ(message([&] { t.apply_right(c.gate); }), c.right) << c.gate;
    EXPECT_EQ(t, before) << c.gate;
  }
  const auto after = [](const char* name, int turns) {
    OperatorTableau result(1);
    result.apply_left(turn(name, 0, turns * quarter));
    return result;
  };
  for (const char* name : {"RX", "RY", "RZ", "PH"}) {
    for (const int turns : {1, 2, 3}) {
      EXPECT_EQ(after(name, turns), after(name, turns + 4));
      EXPECT_EQ(after(name, turns), after(name, turns - 8));
    }
  }
  EXPECT_EQ(message([] { OperatorTableau(2).multiply_right(OperatorTableau(3)); }),
            "Can't multiply Tableaus of different dimensions!");
}

TEST(OperatorTableau, EntriesKeepWhatPauliOperatorsDoNotSee) {
  OperatorTableau t(2);
  t.h_left(0);
  t.h_left(0);
  t.cnot_left(0, 1);
  t.cnot_left(0, 1);
  EXPECT_EQ(t.to_string(),
            "1 0 0 0 0 \n----------\n"
            "0|3 2 0 0 \n0|0 1 0 0 \n0|0 0 3 0 \n0|0 0 2 1 \n");
  expect_operator(t, Dense::identity(4));
  OperatorTableau undone(2);
  undone.rz_plus_left(1);
  undone.rz_plus_right(1);
  EXPECT_EQ(undone, OperatorTableau(2));
}

TEST(OperatorTableau, EmptyOnes) {
  EXPECT_EQ(OperatorTableau(0).data, Exponents{1});
  EXPECT_EQ(OperatorTableau(0).inverse(), OperatorTableau(0));
  OperatorTableau unassigned;
  EXPECT_EQ(unassigned.to_string(), "");
  EXPECT_NO_THROW(unassigned.inverse());
  EXPECT_NO_THROW(unassigned.multiply_right(unassigned));
}

TEST(OperatorTableau, InverseIsExactOnBothSides) {
  Rng rng(53);
  for (const int n : {3, 20}) {
    OperatorTableau t(n);
    for (int k = 0; k < 40 * n; ++k) {
      const int a = static_cast<int>(rng() % at(n));
      const auto gates = clifford_gates(a, (a + 1) % n, (a + 2) % n);
      t.apply_left(gates[rng() % gates.size()]);
    }
    OperatorTableau left = t.inverse(), right = t;
    left.multiply_right(t);
    right.multiply_right(t.inverse());
    EXPECT_EQ(left, OperatorTableau(n));
    EXPECT_EQ(right, OperatorTableau(n));
  }
}

}  // namespace
