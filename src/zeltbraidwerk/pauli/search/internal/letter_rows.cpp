#include "zeltbraidwerk/pauli/search/internal/letter_rows.h"

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

/// One end of a gate: where its wire's bits are in their words, and its label as masks.
struct Lever {
  int shift;
  Word label_x, label_z;

  Word is_pulled(Word x, Word z) const {
    return ((x >> shift & label_z) ^ (z >> shift & label_x)) & 1;
  }
  Word is_letter(Word x, Word z) const { return ((x | z) >> shift) & 1; }
  Word flip_x(Word pulled) const { return (pulled & label_x) << shift; }
  Word flip_z(Word pulled) const { return (pulled & label_z) << shift; }
};

/// What a gate does to the words of one row with its two wires.
struct Turn {
  Lever a, b;

  struct Flips {
    Word x_a, z_a, x_b, z_b;
    Word more;  ///< letters
  };
  Flips operator()(Word x_a, Word z_a, Word x_b, Word z_b) const {
    const Word by_a = a.is_pulled(x_a, z_a);
    const Word by_b = b.is_pulled(x_b, z_b);
    const Word before = a.is_letter(x_a, z_a) + b.is_letter(x_b, z_b);
    Flips flips{a.flip_x(by_b), a.flip_z(by_b), b.flip_x(by_a), b.flip_z(by_a), 0};
    flips.more = a.is_letter(x_a ^ flips.x_a, z_a ^ flips.z_a) +
                 b.is_letter(x_b ^ flips.x_b, z_b ^ flips.z_b) - before;
    return flips;
  }
};

ZELTBRAIDWERK_CLONES void play_in_word(Turn turn, Word* __restrict x, Word* __restrict z,
                                       Word* __restrict weights, int count) {
  for (int row = 0; row < count; ++row) {
    const auto flips = turn(x[row], z[row], x[row], z[row]);
    x[row] ^= flips.x_a ^ flips.x_b;
    z[row] ^= flips.z_a ^ flips.z_b;
    weights[row] += flips.more;
  }
}

ZELTBRAIDWERK_CLONES void play_across(Turn turn, Word* __restrict x_a, Word* __restrict z_a,
                                      Word* __restrict x_b, Word* __restrict z_b,
                                      Word* __restrict weights, int count) {
  for (int row = 0; row < count; ++row) {
    const auto flips = turn(x_a[row], z_a[row], x_b[row], z_b[row]);
    x_a[row] ^= flips.x_a;
    z_a[row] ^= flips.z_a;
    x_b[row] ^= flips.x_b;
    z_b[row] ^= flips.z_b;
    weights[row] += flips.more;
  }
}

}  // namespace

void LetterRows::append(const Word* string) {
  for (int w = 0; w < 2 * words_; ++w) x(w)[count_] = string[w];
  int weight = 0;
  for (int w = 0; w < words_; ++w) weight += std::popcount(string[w] | string[words_ + w]);
  weights_[static_cast<std::size_t>(count_)] = static_cast<Word>(weight);
  ++count_;
}

void LetterRows::play(const Gate& gate) {
  const auto lever = [](End end) {
    return Lever{wire_of(end) % word_bits, static_cast<Word>(label_of(end) & 1),
                 static_cast<Word>(label_of(end) >> 1)};
  };
  const Turn turn{lever(gate.a), lever(gate.b)};
  const int a = wire_of(gate.a) / word_bits;
  const int b = wire_of(gate.b) / word_bits;
  if (a == b) {
    play_in_word(turn, x(a), z(a), weights_.data(), count_);
  } else {
    play_across(turn, x(a), z(a), x(b), z(b), weights_.data(), count_);
  }
}

}  // namespace zelt::braidwerk::internal
