#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>

#include "plain_synthesis.h"
#include "support/dense.h"
#include "support/rotations.h"
#include "zeltbraidwerk/pauli/pauli_synth.h"

namespace {

using structures::Gate;
using structures::OperatorTableau;
using structures::Parameter;
using support::rows;
using support::symbolic;
using support::text;

/// The syntheses by number: recursive, greedy, in matchings, sets closed and open by three methods.
constexpr int syntheses = 9;
constexpr int first_closed = 3;
constexpr int first_open = 6;

std::vector<Gate> run(int which, PauliRotationMap rotations, OperatorTableau& tableau) {
  if (which == 0) return pauli_synth(rotations, tableau);
  if (which == 1) return greedy_pauli_synth(rotations, tableau);
  if (which == 2) return greedy_pauli_synth_depth(rotations, tableau);
  if (which < first_open) return commute_pauli_synth(rotations, which - first_closed);
  return commute_pauli_synth_improved(rotations, tableau, which - first_open);
}

std::vector<Gate> run_plain(int which, PauliRotationMap rotations, OperatorTableau& tableau) {
  const int n = tableau.nbqbits;
  if (which == 1 || which == 2)
    rotations.erase(std::vector<unsigned char>(static_cast<std::size_t>(n)));
  if (which >= first_open) return plain::sets(rotations, n, which - first_open, &tableau);
  if (which >= first_closed) return plain::sets(rotations, n, which - first_closed, nullptr);
  plain::Synthesis synthesis(rotations, n);
  auto circuit = which == 0 ? synthesis.recursive() : synthesis.greedy(which == 2);
  if (which == 0) return circuit;
  for (const Gate& gate : circuit) tableau.apply_left(gate);
  return circuit;
}

/// The first fault in what a synthesis makes of the rotations, from a tableau that holds something.
std::string fault(int which, const PauliRotationMap& rotations, int n) {
  OperatorTableau before(n);
  before.h_left(0);
  if (n > 1) before.cnot_left(0, 1);
  OperatorTableau tableau = before;
  const auto unfolded = support::unfold(run(which, rotations, tableau), n);
  std::string found = support::fault(rotations, unfolded);
  if (which >= first_closed && which < first_open && !support::is_identity(unfolded.pulled_back)) {
    found += " The Clifford operator is not undone.";
  }
  // What the tableau should have gained.
  OperatorTableau wanted = which >= first_open ? OperatorTableau(n) : before;
  if (which == 1 || which == 2 || which >= first_open) {
    for (const Gate& gate : unfolded.clifford) wanted.apply_left(gate);
  }
  if (tableau != wanted) found += " The tableau is wrong.";
  return found.empty() ? "" : "synthesis " + std::to_string(which) + ": " + found;
}

support::PauliRows sparse_rows(int count, int n, std::mt19937& rng) {
  auto table = support::random_rows(count, n, rng);
  for (auto& row : table) {
    for (auto& letter : row) letter = rng() % 3 == 0 ? letter : 0;
  }
  return table;
}

TEST(PauliSynthesis, ServesEveryRotationOnce) {
  std::mt19937 rng(1);
  for (int round = 0; round < 1200; ++round) {
    const int n = 1 + round % 9;
    const int m = 1 + static_cast<int>(rng() % (round % 20 == 0 ? 300 : 40));
    const auto table = round % 2 != 0 ? support::random_rows(m, n, rng) : sparse_rows(m, n, rng);
    for (int which = 0; which < syntheses; ++which) {
      ASSERT_EQ(fault(which, symbolic(table), n), "") << text(table);
    }
  }
}

TEST(PauliSynthesis, ServesExcitations) {
  // Strings, and the CNOTs of a ladder up and down for each: what tells a right generator.
  std::size_t strings = 0;
  std::size_t ladders = 0;
  for (const auto& [string, angle] : support::uccsd(12, 4)) {
    const auto letters = std::count_if(string.begin(), string.end(), is_non_zero);
    ++strings;
    ladders += 2 * static_cast<std::size_t>(letters - 1);
  }
  EXPECT_EQ(strings, 640U);
  EXPECT_EQ(ladders, 6976U);
  for (const auto& [qubits, electrons] : {std::pair{4, 2}, {9, 5}, {12, 4}}) {
    for (int which = 0; which < syntheses; ++which) {
      EXPECT_EQ(fault(which, support::uccsd(qubits, electrons), qubits), "");
    }
  }
}

TEST(PauliSynthesis, GoesAsWritten) {
  std::mt19937 rng(2);
  const auto compare = [](const PauliRotationMap& rotations, int n) {
    // Decoding is random: the last method of each kind is left out.
    for (const int which : {0, 1, 2, 3, 4, 6, 7}) {
      OperatorTableau tableau(n);
      OperatorTableau plain_tableau(n);
      const auto circuit = run(which, rotations, tableau);
      ASSERT_EQ(circuit, run_plain(which, rotations, plain_tableau)) << "synthesis " << which;
      ASSERT_EQ(tableau, plain_tableau);
    }
  };
  for (int round = 0; round < 400; ++round) {
    const int n = 1 + round % 7;
    const int m = 1 + static_cast<int>(rng() % 60);
    const auto table = round % 2 != 0 ? support::random_rows(m, n, rng) : sparse_rows(m, n, rng);
    compare(symbolic(table), n);
    if (HasFatalFailure()) FAIL() << text(table);
  }
  // Long lists: earlier weights settle ties, and the list is put in order now and then.
  compare(symbolic(support::random_rows(700, 7, rng)), 7);
  compare(symbolic(sparse_rows(1500, 8, rng)), 8);
  compare(support::uccsd(8, 4), 8);
}

TEST(PauliSynthesis, KeepsTheOperator) {
  std::mt19937 rng(3);
  for (int round = 0; round < 45; ++round) {
    const int n = 1 + round % 5;
    const auto rotations = symbolic(support::random_rows(7, n, rng));
    OperatorTableau tableau(n);
    auto circuit = run(round % syntheses, rotations, tableau);
    const auto unfolded = support::unfold(circuit, n);
    const auto value = [](const Parameter& angle) {
      const auto name = angle.expression.find('a');
      return (name == 0 ? 0.3 : -0.3) * (1 + std::stod(angle.expression.substr(name + 1)));
    };
    auto wanted = support::Dense::identity(std::size_t{1} << n);
    for (const auto& [string, angle] : unfolded.rotations) {
      const double theta = value(angle) * (string.first ? -1 : 1);
      wanted = support::rotation(string.second, theta) * wanted;
    }
    wanted = support::unitary(unfolded.clifford, n) * wanted;
    for (Gate& gate : circuit) {
      for (Parameter& angle : gate.params) {
        if (angle.is_abstract) angle = value(angle);
      }
    }
    EXPECT_TRUE(support::unitary(circuit, n).near(wanted));
  }
}

/// "H0 CNOT01 RX0(a0) |": the gates, with the angles of rotations.
std::string show(const std::vector<Gate>& circuit) {
  std::string all;
  for (const Gate& gate : circuit) {
    all += (all.empty() ? "" : " ") + gate.name;
    for (const int q : gate.qbits) all += std::to_string(q);
    if (gate.params.empty()) continue;
    all += gate.params[0].is_abstract ? '(' + gate.params[0].expression + ')'
           : gate.params[0].value < 0 ? "-"
                                      : "+";
  }
  return all;
}

TEST(PauliSynthesis, KeepsToItsWorkedExamples) {
  const auto circuit = [](int which, const std::vector<std::string>& strings) {
    OperatorTableau tableau(static_cast<int>(strings[0].size()));
    return show(run(which, symbolic(rows(strings)), tableau));
  };
  EXPECT_EQ(circuit(0, {"XX"}), "CNOT01 RX0(a0)");
  EXPECT_EQ(circuit(0, {"ZZ"}), "CNOT10 PH0(a0)");
  EXPECT_EQ(circuit(0, {"XZ"}), "H0 CNOT10 PH0(a0)");
  EXPECT_EQ(circuit(0, {"IZ", "YI", "XI"}), "RZ1(a0) RX0(a2) RY0(a1)");
  EXPECT_EQ(circuit(1, {"ZZ"}), "CNOT10 RZ0(a0)");
  EXPECT_EQ(circuit(2, {"ZI", "IY"}), "RY1(a1) RZ0(a0)");
  EXPECT_EQ(circuit(3, {"IZ"}), "PH1(a0)");
  EXPECT_EQ(circuit(3, {"IX"}), "H1 PH1(a0) H1");
  EXPECT_EQ(circuit(3, {"Y"}), "RX0+ PH0(a0) RX0-");
  EXPECT_EQ(circuit(6, {"X", "Z"}), "PH0(a1) H0 PH0(a0)");
  EXPECT_EQ(circuit(6, {"X", "Y"}), "RX0+ PH0(a1) H0 PH0(a0)");

  // Angles that make a rotation a Clifford gate go into the tableau; others are thrown out.
  PauliRotationMap rotations{{{3}, std::numbers::pi / 2}, {{0}, 0.3}};
  for (const int which : {1, 2, 6}) {
    OperatorTableau tableau(1);
    OperatorTableau quarter(1);
    quarter.rz_plus_left(0);
    run(which, rotations, tableau);
    EXPECT_EQ(tableau, quarter);
    EXPECT_THROW(run(which, {{{3}, 0.3}}, tableau), std::logic_error);
  }
}

TEST(PauliSynthesis, EndsOnWhatIsNoList) {
  for (int which = 0; which < syntheses; ++which) {
    OperatorTableau tableau(2);
    tableau.h_left(0);
    const OperatorTableau before = tableau;
    EXPECT_TRUE(run(which, {}, tableau).empty());
    EXPECT_EQ(tableau, before);
    EXPECT_TRUE(run(which, symbolic(rows({"II"})), tableau).empty());
    EXPECT_THROW(run(which, symbolic({{1, 1}, {1}, {1, 1, 1}}), tableau), std::invalid_argument);
    EXPECT_THROW(run(which, symbolic({{1, 4}}), tableau), std::out_of_range);
    OperatorTableau none(0);
    EXPECT_TRUE(run(which, {{{}, 1.0}}, none).empty());
  }
}

TEST(PauliSynthesis, TakesSteps) {
  PauliTable table = rows({"XYZ", "XII", "III", "XXZ"});
  auto params = support::numbered_angles(4);
  std::vector<Gate> circuit;
  for (unsigned r = 0; r < 4; ++r) EXPECT_EQ(synthesize_trivial(table, params, r, circuit), r == 1);
  EXPECT_EQ(show(circuit), "RX0+");
  EXPECT_THAT(get_counts(table, {0, 2, 3}, 0), testing::ElementsAre(1, 2, 0, 0));
  std::set<int> from{0, 1, 2};
  std::set<int> to{2};
  get_pauli_cols(from, to, 1, table, 2);
  EXPECT_THAT(from, testing::ElementsAre(1));
  EXPECT_THAT(to, testing::ElementsAre(0, 2));
  get_I_cols(to, from, 0, table);
  EXPECT_THAT(to, testing::ElementsAre(0));
  unsigned char letter = 9;
  int index = 9;
  EXPECT_EQ(weight(table[2], letter, index), 0);
  EXPECT_EQ(index, 9);
  EXPECT_EQ(weight(table[0], letter, index), 3);
  EXPECT_EQ(letter * 10 + index, 32);

  // One group as the recursion meets it: the row that is done comes to a single letter in silence.
  plain::Synthesis group({}, 3);
  group.table = table = rows({"XXZ", "XXI", "YYI", "XYZ"});
  group.params = params = support::numbered_angles(4);
  BoolRow done = group.done = {false, true, false, false};
  Part part{0, {0, 1}, {1, 2}};
  circuit.clear();
  __pauli_synth_rec(part, 3, table, params, circuit, done);
  group.serve(0, {0, 1}, {1, 2});
  EXPECT_EQ(show(circuit), "CNOT01 H0 CNOT20 PH0+");
  EXPECT_EQ(circuit, group.circuit);
  EXPECT_EQ(table, group.table);
  EXPECT_EQ(params, group.params);
  EXPECT_EQ(done, group.done);

  std::mt19937 rng(4);
  for (int round = 0; round < 100; ++round) {
    const int n = round % 7;
    plain::Synthesis list({}, n);
    list.table = sparse_rows(round * 2, n, rng);
    std::vector<Move> moves(9);
    find_best_moves(list.table, n, moves);
    ASSERT_EQ(moves, list.best_matching());
    for (const Move& m : moves) {
      ASSERT_EQ(_get_score(static_cast<unsigned>(m.control), static_cast<unsigned>(m.target),
                           m.control_basis, m.target_basis, list.table),
                list.score(m));
    }
  }
}

}  // namespace
