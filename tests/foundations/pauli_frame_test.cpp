#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>
#include <numeric>

#include "support/oracles.h"
#include "zeltbraidwerk/foundations/structures.h"

namespace {

using namespace structures;
using namespace zelt::braidwerk::internal;
using support::Rng;
using testing::ElementsAre;

constexpr const char* names = "IXYZ";

PauliFrame random_frame(int qubits, int rows, Rng& rng) {
  PauliFrame frame(qubits, rows);
  for (int r = 0; r < rows; ++r) {
    for (int q = 0; q < qubits; ++q) frame.set_letter(r, q, static_cast<unsigned char>(rng() % 4));
    frame.set_negative(r, rng() & 1);
  }
  return frame;
}

std::pair<bool, std::string> signed_text(const PauliFrame& frame, int r) {
  std::string text;
  for (const unsigned char letter : frame.letters(r)) text += names[letter];
  return {frame.is_negative(r), text};
}

Gate random_clifford(int qubits, Rng& rng) {
  const auto draw = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
  const int a = draw(qubits);
  const std::string pairs[] = {"CNOT", "CZ", "CSIGN", "XX"};
  if (qubits > 1 && draw(3) == 0) {
    return Gate(pairs[draw(4)], {a, (a + 1 + draw(qubits - 1)) % qubits});
  }
  const std::string singles[] = {"H", "S", "D-S", "X", "Y", "Z"};
  if (draw(2) == 0) return Gate(singles[draw(6)], {a});
  const std::string axes[] = {"RX", "RY", "RZ", "PH"};
  return Gate(axes[draw(4)], {a}, {Parameter((draw(13) - 6) * std::numbers::pi / 2)}, false);
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
      WeylOperator w(text);
      w.conjugate_with(tableau);
      auto wanted = w.to_pauli();
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
  frame.apply(Gate("RZ", {0}, {Parameter("theta")}, true));
  frame.apply(Gate("XX", {0}));
  EXPECT_EQ(signed_text(frame, 0), std::pair(false, std::string("XY")));
  EXPECT_THROW(frame.apply(Gate("RX", {0}, {Parameter(0.3)}, false)), std::logic_error);
  EXPECT_THROW(frame.apply(Gate("I", {0})), std::logic_error);
  EXPECT_THROW(PauliFrame::pack({{0, 4}}, 2), std::out_of_range);
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
      int differing = 0;
      for (int q = 0; q < 4; ++q) {
        const int a = frame.letter(r, q);
        const int b = frame.letter(s, q);
        differing += a != 0 && b != 0 && a != b;
      }
      ASSERT_EQ(frame.commute(r, s), differing % 2 == 0);
      ASSERT_EQ(plane[support::at(s) / word_bits] >> (s % word_bits) & 1, differing % 2);
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
