#include "zeltbraidwerk/foundations/internal/preimages.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>

#include "support/dense.h"
#include "support/pauli.h"

namespace {

using namespace zelt::braidwerk::internal;

TEST(Preimages, AreTheLettersCarriedBackThroughTheCircuit) {
  std::mt19937 rng(1);
  const auto any = [&rng](int below) {
    return static_cast<int>(rng() % static_cast<unsigned>(below));
  };
  for (int round = 0; round < 100; ++round) {
    const int n = round % 10 == 0 ? 70 : 1 + round % 5;
    Preimages preimages(n);
    std::vector<structures::Gate> gates;
    for (int k = 0; k < 8 * n; ++k) {
      const int a = any(n);
      const int b = n > 1 ? (a + 1 + any(n - 1)) % n : a;
      const int letter = 1 + any(3);
      const int quarters = any(6);
      const std::string axis = std::string("R") + "IXYZ"[letter];
      const structures::Gate kinds[] = {structures::Gate::H(a),
                                        support::turn(axis, a, quarters * std::numbers::pi / 2),
                                        structures::Gate::CZ(a, b), structures::Gate::CNOT(a, b)};
      const int kind = any(n > 1 ? 4 : 2);
      gates.push_back(kinds[kind]);
      if (kind == 0) preimages.h(a);
      if (kind == 1) preimages.turn(letter, a, quarters);
      if (kind == 2) preimages.cz(a, b);
      if (kind == 3) preimages.cnot(a, b);
    }
    PauliFrame wanted(n, 3 * n);
    for (int row = 0; row < 3 * n; ++row) {
      wanted.set_letter(row, row / 3, static_cast<unsigned char>(1 + row % 3));
    }
    for (const auto& gate : support::inverse(gates)) wanted.apply(gate);

    const int words = preimages.words();
    std::vector<Word> string(2 * static_cast<std::size_t>(words), ~Word{0});
    for (int row = 0; row < 3 * n; ++row) {
      const int letter = 1 + row % 3;
      ASSERT_EQ(preimages.read(letter, row / 3, string.data()), wanted.is_negative(row));
      ASSERT_EQ(preimages.is_negative(letter, row / 3), wanted.is_negative(row));
      for (int q = 0; q < n; ++q) {
        const Word* word = string.data() + q / word_bits;
        const auto bit = [&](const Word* w) { return (*w >> (q % word_bits) & 1) != 0; };
        ASSERT_EQ(letter_of(bit(word), bit(word + words)), wanted.letter(row, q)) << q;
      }
    }
  }
}

}  // namespace
