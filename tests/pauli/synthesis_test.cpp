#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <numbers>

#include "support/digest.h"
#include "support/rotations.h"
#include "zeltbraidwerk/pauli/commute_pauli_synth.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/pauli/pauli_synth.h"

namespace {

using structures::Gate;
using structures::OperatorTableau;
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

TEST(PauliSynthesis, KeepsItsGates) {
  std::mt19937 rng(2);
  // Decoding is random: the last method of each kind is left out.
  std::map<int, support::Digest> digests{{0, {}}, {1, {}}, {2, {}}, {3, {}},
                                         {4, {}}, {6, {}}, {7, {}}};
  const auto add = [&](const PauliRotationMap& rotations, int n) {
    for (auto& [which, digest] : digests) {
      OperatorTableau tableau(n);
      digest.add(run(which, rotations, tableau), tableau);
    }
  };
  for (int round = 0; round < 400; ++round) {
    const int n = 1 + round % 7;
    const int m = 1 + static_cast<int>(rng() % 60);
    add(symbolic(round % 2 != 0 ? support::random_rows(m, n, rng) : sparse_rows(m, n, rng)), n);
  }
  // Long lists: earlier weights settle ties, and the list is put in order now and then.
  add(symbolic(support::random_rows(700, 7, rng)), 7);
  add(symbolic(sparse_rows(1500, 8, rng)), 8);
  EXPECT_EQ(digests[0].text(), "e50d4fb8120a2b17") << "recursive";
  EXPECT_EQ(digests[1].text(), "37d0c1a9e02a808f") << "greedy";
  EXPECT_EQ(digests[2].text(), "d014cd9302fdafc5") << "in matchings";
  EXPECT_EQ(digests[3].text(), "a1e675445367218f") << "closed sets";
  EXPECT_EQ(digests[4].text(), "0dcfb70cf266a81b") << "closed sets by graph states";
  EXPECT_EQ(digests[6].text(), "712c5ee02f39914f") << "open sets";
  EXPECT_EQ(digests[7].text(), "b60bf9ea496a0663") << "open sets by graph states";
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

TEST(PauliSynthesis, FoldsCliffordAnglesIntoTheTableau) {
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
  table = rows({"XXZ", "XXI", "YYI", "XYZ"});
  params = support::numbered_angles(4);
  BoolRow done{false, true, false, false};
  Part part{0, {0, 1}, {1, 2}};
  circuit.clear();
  __pauli_synth_rec(part, 3, table, params, circuit, done);
  EXPECT_EQ(show(circuit), "CNOT01 H0 CNOT20 PH0+");
  EXPECT_EQ(text(table), "ZII ZIZ ZZZ YZI");
  EXPECT_EQ(done, (BoolRow{true, true, false, false}));

  std::mt19937 rng(4);
  support::Digest digest;
  for (int round = 0; round < 100; ++round) {
    const int n = round % 7;
    table = sparse_rows(round * 2, n, rng);
    std::vector<Move> moves(9);
    find_best_moves(table, n, moves);
    for (const Move& m : moves) {
      digest.add(m.control, m.target, m.control_basis, m.target_basis);
      digest.add(_get_score(static_cast<unsigned>(m.control), static_cast<unsigned>(m.target),
                            m.control_basis, m.target_basis, table));
    }
  }
  EXPECT_EQ(digest.text(), "eedd061bc22c9583");
}

}  // namespace
