#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>

#include "support/dense.h"
#include "support/oracles.h"
#include "support/pauli.h"
#include "zeltbraidwerk/foundations/structures.h"

namespace {

using namespace structures;
using namespace zelt::braidwerk::internal;
using support::Rng;
using support::turn;
using testing::ElementsAre;

PauliFrame random_frame(int qubits, int rows, Rng& rng) {
  PauliFrame frame(qubits, rows);
  for (int r = 0; r < rows; ++r) {
    for (int q = 0; q < qubits; ++q) frame.set_letter(r, q, static_cast<unsigned char>(rng() % 4));
    frame.set_negative(r, rng() & 1);
  }
  return frame;
}

support::SignedString signed_text(const PauliFrame& frame, int r) {
  return {frame.is_negative(r), support::text(frame.letters(r))};
}

Gate random_clifford(int qubits, Rng& rng) {
  const auto draw = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
  const std::string names_of_gates[] = {"CNOT", "CZ", "CSIGN", "XX", "H",  "S",  "D-S",
                                        "X",    "Y",  "Z",     "RX", "RY", "RZ", "PH"};
  const int kind = qubits > 1 ? draw(14) : 4 + draw(10);
  const int a = draw(qubits);
  if (kind < 4) return Gate(names_of_gates[kind], {a, (a + 1 + draw(qubits - 1)) % qubits});
  if (kind < 10) return Gate(names_of_gates[kind], {a});
  return turn(names_of_gates[kind], a, (draw(13) - 6) * std::numbers::pi / 2);
}

TEST(PauliFrame, CarriesSignedStringsAsTheTableauDoes) {
  Rng rng(1);
  for (int round = 0; round < 200; ++round) {
    const int n = 1 + round % 5;
    const PauliFrame before = random_frame(n, 1 + static_cast<int>(rng() % 150), rng);
    PauliFrame after = before;
    OperatorTableau tableau(n);
    for (int k = 0; k < 20; ++k) {
      const Gate gate = random_clifford(n, rng);
      after.apply(gate);
      tableau.apply_left(gate);
    }
    for (int r = 0; r < before.rows(); ++r) {
      const auto [negative, text] = signed_text(before, r);
      auto wanted = support::carried(text, tableau);
      wanted.first ^= negative;
      ASSERT_EQ(signed_text(after, r), wanted) << text;
    }
  }
}

TEST(PauliFrame, HasTheGatesThatNoNameReaches) {
  Rng rng(2);
  const PauliFrame before = random_frame(2, 100, rng);
  PauliFrame swapped = before;
  PauliFrame by_cnots = before;
  swapped.apply(TwoQubitGate::swap, 0, 1);
  for (const bool back : {false, true, false}) by_cnots.cnot(back, !back);
  PauliFrame there_and_back = before;
  there_and_back.apply(TwoQubitGate::xx, 0, 1);
  there_and_back.apply(TwoQubitGate::xx_inverse, 0, 1);
  for (int r = 0; r < before.rows(); ++r) {
    EXPECT_EQ(signed_text(swapped, r), signed_text(by_cnots, r));
    EXPECT_EQ(signed_text(there_and_back, r), signed_text(before, r));
  }
}

TEST(PauliFrame, TakesTheGatesThatTheTableauTakes) {
  PauliFrame frame = PauliFrame::pack({{1, 2}}, 2);
  frame.apply(turn("RZ", 0, {"theta"}));
  frame.apply(Gate("XX", {0}));
  EXPECT_EQ(signed_text(frame, 0), std::pair(false, std::string("XY")));
  EXPECT_THROW(frame.apply(turn("RX", 0, 0.3)), std::logic_error);
  EXPECT_THROW(frame.apply(Gate("I", {0})), std::logic_error);
  EXPECT_THROW(PauliFrame::pack({{0, 4}}, 2), std::out_of_range);
}

TEST(PauliFrame, TakesCliffordGatesAsTheGatesThatTheyAreWrittenAs) {
  Rng rng(8);
  const PauliFrame before = random_frame(2, 100, rng);
  for (int kind = 0; kind <= static_cast<int>(CliffordGate::Kind::z); ++kind) {
    const bool pair = kind < 2;
    const CliffordGate gate{static_cast<CliffordGate::Kind>(kind), 1, pair ? 0 : -1};
    PauliFrame after = before;
    after.apply(gate);
    PauliFrame wanted = before;
    wanted.apply(to_gate(gate));
    PauliFrame back = after;
    for (const CliffordGate& undoing : inverted({gate})) back.apply(undoing);
    for (int r = 0; r < before.rows(); ++r) {
      ASSERT_EQ(signed_text(after, r), signed_text(wanted, r)) << kind;
      ASSERT_EQ(signed_text(back, r), signed_text(before, r)) << kind;
    }
  }
}

TEST(PauliFrame, KnowsWhichRowsAnticommute) {
  Rng rng(9);
  for (const int rows : {0, 1, 63, 65, 130}) {
    const PauliFrame frame = random_frame(5, rows, rng);
    const BitMatrix odd = frame.anticommuting();
    for (int r = 0; r < rows; ++r) {
      for (int s = 0; s < rows; ++s) ASSERT_EQ(odd.get(r, s), !frame.commute(r, s));
    }
  }
}

TEST(PauliFrame, CountsLettersAndWeights) {
  Rng rng(3);
  for (int round = 0; round < 60; ++round) {
    const int n = static_cast<int>(rng() % 9);
    const int m = static_cast<int>(rng() % 200);
    const PauliFrame frame = random_frame(n, m, rng);
    std::vector<int> some;
    for (int q = 0; q < n; ++q) {
      if (rng() & 1) some.push_back(q);
    }
    const BitMatrix supports = frame.supports();
    int lightest = -1;
    int least = n + 1;
    for (int r = 0; r < m; ++r) {
      const PauliLetters letters = frame.letters(r);
      const auto weight = n - std::count(letters.begin(), letters.end(), 0);
      EXPECT_EQ(frame.weight(r), weight);
      EXPECT_EQ(frame.weights()[support::at(r)], weight);
      for (int q = 0; q < n; ++q) EXPECT_EQ(supports.get(r, q), letters[support::at(q)] != 0);
      int among = 0;
      for (const int q : some) among += letters[support::at(q)] != 0;
      if (among > 0 && among < least) {
        least = among;
        lightest = r;
      }
    }
    EXPECT_EQ(frame.lightest_row(some), lightest);
  }
  const PauliFrame frame = PauliFrame::pack({{1}, {3}, {0}, {1}, {2}}, 1);
  const Word mask = 0b01110;
  EXPECT_THAT(frame.letter_counts(0), ElementsAre(1, 2, 1, 1));
  EXPECT_THAT(frame.letter_counts(0, &mask), ElementsAre(1, 1, 0, 1));
}

TEST(PauliFrame, TellsWhichRowsCommute) {
  Rng rng(4);
  const PauliFrame frame = random_frame(4, 130, rng);
  std::vector<Word> plane(support::at(frame.words()));
  for (int r = 0; r < frame.rows(); ++r) {
    frame.anticommuting_rows(frame, r, plane.data());
    for (int s = 0; s < frame.rows(); ++s) {
      const bool odd =
          support::anticommute(support::text(frame.letters(r)), support::text(frame.letters(s)));
      ASSERT_EQ(frame.commute(r, s), !odd);
      ASSERT_EQ(plane[support::at(s) / word_bits] >> (s % word_bits) & 1, odd);
    }
  }
}

TEST(PauliFrame, SelectsRowsInAnyOrder) {
  Rng rng(5);
  const PauliFrame frame = random_frame(3, 100, rng);
  const std::vector<int> rows{99, 3, 64, 3};
  const PauliFrame selected = frame.select(rows);
  ASSERT_EQ(selected.rows(), 4);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(signed_text(selected, k), signed_text(frame, rows[support::at(k)]));
  }
  std::vector<PauliLetters> strings{{3, 3}, {3, 3, 3, 3}, {}, {0, 0, 0}};
  selected.unpack_into(strings);
  EXPECT_EQ(strings[3], frame.letters(3));
  EXPECT_THAT(strings[0], ElementsAre(frame.letter(99, 0), frame.letter(99, 1)));
  EXPECT_EQ(strings[1][3], 3);
}

}  // namespace
