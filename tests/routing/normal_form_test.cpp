#include "zeltbraidwerk/routing/normal_form.h"

#include <gtest/gtest.h>

#include <numbers>
#include <sstream>

#include "support/circuits.h"
#include "support/digest.h"
#include "support/graphs.h"
#include "support/pauli.h"

namespace {

using namespace synthesis;
using structures::Gate;
using structures::OperatorTableau;
using structures::Parameter;
using support::turn;

constexpr double pi = std::numbers::pi;

std::string show(const RotationSequence& rotations) {
  std::ostringstream text;
  for (const auto& [letters, angle] : rotations) {
    structures::operator<<(text << letters << ' ', angle) << ' ';
  }
  return text.str();
}

std::string show(const std::vector<RotationSequence>& blocks) {
  std::string text;
  for (const RotationSequence& block : blocks) text += "{ " + show(block) + "}";
  return text;
}

std::string blocks_of(const std::vector<Gate>& circuit, int n, bool commuting, bool merge) {
  OperatorTableau start(n);
  return show(normalize_circuit(circuit, start, commuting, merge).first);
}

TEST(NormalForm, PredicatesAndAxes) {
  for (const double angle : {0.0, pi / 2, -pi / 2, pi, -pi, pi + 9e-6}) {
    EXPECT_TRUE(is_clifford_angle(angle)) << angle;
    EXPECT_TRUE(is_clifford(turn("PH", 0, angle)));
  }
  for (const Parameter& angle :
       {Parameter(3 * pi / 2), Parameter(2 * pi), Parameter(pi / 4), Parameter("0.0")}) {
    EXPECT_FALSE(is_clifford_angle(angle)) << angle;
    EXPECT_FALSE(is_clifford(turn("RZ", 0, angle)));
  }
  EXPECT_FALSE(is_clifford(Gate("T", {0})));
  EXPECT_THROW(is_clifford(Gate("RZ", {0})), std::out_of_range);
  EXPECT_EQ(get_axis(turn("RY", 1, 0.3), 3), "IYI");
  EXPECT_EQ(get_axis(turn("PH", 0, 0.3), 2), "ZI");
  EXPECT_EQ(get_axis(Gate::H(1), 3), "II");
  EXPECT_TRUE(commute("XI", "IX") && commute("XX", "ZZ") && commute("", "X"));
  EXPECT_FALSE(commute("XI", "ZI"));
  EXPECT_THROW(commute("XI", "X"), std::out_of_range);
  EXPECT_EQ(show(RotationSequence()), "");
  EXPECT_EQ(support::show(get_basis_change("YXZI", 4)), "RX 0, H 1");
}

TEST(NormalForm, ShapesOfBlocks) {
  const std::vector<Gate> quarter{turn("RZ", 0, pi / 4), turn("RZ", 0, pi / 4)};
  EXPECT_EQ(blocks_of(quarter, 1, true, true), "{ }");
  EXPECT_EQ(blocks_of(quarter, 1, true, false), "{ Z 1.5708 }");
  EXPECT_EQ(blocks_of(quarter, 1, false, false), "{ }{ Z 0.785398 }{ Z 0.785398 }");
  EXPECT_EQ(blocks_of({Gate::H(0), Gate::CNOT(0, 1)}, 2, true, false), "{ }");
  EXPECT_EQ(blocks_of({}, 0, false, true), "{ }");
  const std::vector<Gate> four{turn("RZ", 0, 0.1), turn("RZ", 1, 0.2), turn("RX", 0, 0.3),
                               turn("RZ", 0, 0.4)};
  EXPECT_EQ(blocks_of(four, 2, true, true), "{ ZI 0.1 IZ 0.2 }{ XI 0.3 }{ ZI 0.4 }");
}

TEST(NormalForm, RefusesOtherGates) {
  OperatorTableau start(2);
  EXPECT_THROW(normalize_circuit({Gate("T", {0})}, start, true, true), std::logic_error);
  EXPECT_THROW(normalize_circuit({turn("RZ", 2, 0.3)}, start, true, true), std::out_of_range);
  EXPECT_THROW(merge_rotations({{"XX", 0.1}, {"X", 0.1}}), std::out_of_range);
}

/// On starts other than the identity too.
TEST(NormalForm, KeepsItsAnswers) {
  std::mt19937 rng(71);
  support::Digest digest;
  for (int k = 0; k < 1500; ++k) {
    const int n = 1 + k % 5 + (k % 50 == 0 ? 70 : 0);
    const auto kind = k % 3 == 0 ? support::AngleKind::symbolic : support::AngleKind::numeric;
    const auto circuit = support::random_circuit(n, static_cast<int>(rng() % 60), kind, rng);
    OperatorTableau start(n);
    if (k % 4 == 0) start.rx_plus_left(0);
    const bool commuting = rng() % 2;
    digest.add(normalize_circuit(circuit, start, commuting, rng() % 2));
  }
  for (int k = 0; k < 200; ++k) {
    RotationSequence rotations;
    for (const auto& row : support::random_rows(20, 2, rng)) {
      rotations.emplace_back(support::text(row), pi / 4 * static_cast<double>(rng() % 4));
    }
    OperatorTableau tableau(2);
    tableau.cnot_left(0, 1);
    digest.add(merge_rotations(rotations));
    digest.add(renormalize(rotations, tableau), rotations, tableau);
  }
  EXPECT_EQ(digest.text(), "a7ddb29686ee2ea3");
}

/// The rotation about P by pi/2 or pi is the operator that the tableau stands for.
TEST(NormalForm, FoldsRotationsWithTheirSign) {
  std::mt19937 rng(73);
  for (int k = 0; k < 300; ++k) {
    const std::string axis = support::text(support::random_rows(1, 4, rng)[0]);
    const double angle = pi / 2 * (static_cast<int>(rng() % 5) - 2);
    std::pair<std::string, Parameter> rotation{axis, angle};
    OperatorTableau tableau(4);
    update_clifford(rotation, tableau);
    const std::string other = support::text(support::random_rows(1, 4, rng)[0]);
    const auto [minus, image] = support::carried(other, tableau);
    const auto u = support::rotation(axis, angle);
    const auto expected = u.dagger() * support::pauli(other) * u;
    ASSERT_TRUE(expected.near(support::pauli(image) * (minus ? -1.0 : 1.0))) << axis << angle;
  }
}

TEST(NormalForm, Texts) {
  std::ostringstream text;
  text << std::map<BoolRow, Parameter>{{{true, false}, Parameter(0.5)}, {{false}, Parameter("a")}};
  EXPECT_EQ(text.str(), "0 : a\n1 0 : 0.5\n");
}

}  // namespace
