#include "zeltbraidwerk/foundations/internal/preimages.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

namespace {

using namespace zelt::braidwerk::internal;

/// A gate in both forms; the second undoes it.
struct Played {
  std::function<void(Preimages&)> forward;
  std::function<void(PauliFrame&)> undo;
};

Played random_gate(int n, std::mt19937& rng) {
  const auto any = [&rng](int below) {
    return static_cast<int>(rng() % static_cast<unsigned>(below));
  };
  const int a = any(n);
  const int b = n > 1 ? (a + 1 + any(n - 1)) % n : a;
  switch (any(n > 1 ? 4 : 2)) {
    case 0:
      return {[=](Preimages& p) { p.h(a); }, [=](PauliFrame& f) { f.h(a); }};
    case 1: {
      const int letter = 1 + any(3);
      const int quarters = any(6);
      constexpr OneQubitGate backward[] = {OneQubitGate::rx_minus, OneQubitGate::ry_minus,
                                           OneQubitGate::s_dagger};
      return {[=](Preimages& p) { p.turn(letter, a, quarters); },
              [=](PauliFrame& f) {
                for (int k = 0; k < quarters; ++k) f.apply(backward[letter - 1], a);
              }};
    }
    case 2:
      return {[=](Preimages& p) { p.cz(a, b); }, [=](PauliFrame& f) { f.cz(a, b); }};
    default:
      return {[=](Preimages& p) { p.cnot(a, b); }, [=](PauliFrame& f) { f.cnot(a, b); }};
  }
}

TEST(Preimages, AreTheLettersCarriedBackThroughTheCircuit) {
  std::mt19937 rng(1);
  for (int round = 0; round < 100; ++round) {
    const int n = round % 10 == 0 ? 70 : 1 + round % 5;
    Preimages preimages(n);
    std::vector<Played> gates;
    for (int k = 0; k < 8 * n; ++k) {
      gates.push_back(random_gate(n, rng));
      gates.back().forward(preimages);
    }
    PauliFrame wanted(n, 3 * n);
    for (int row = 0; row < 3 * n; ++row) {
      wanted.set_letter(row, row / 3, static_cast<unsigned char>(1 + row % 3));
    }
    for (auto gate = gates.rbegin(); gate != gates.rend(); ++gate) gate->undo(wanted);

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
