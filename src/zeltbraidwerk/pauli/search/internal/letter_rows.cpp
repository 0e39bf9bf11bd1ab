#include "zeltbraidwerk/pauli/search/internal/letter_rows.h"

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

/// One end of a gate: where its wire's bits are in all rows, and its label as masks.
struct Lever {
  Word* x;
  Word* z;
  int shift;
  Word label_x, label_z;

  Word is_pulled(int row) const {
    return ((x[row] >> shift & label_z) ^ (z[row] >> shift & label_x)) & 1;
  }
  Word is_letter(int row) const { return ((x[row] | z[row]) >> shift) & 1; }
  void move(int row, Word pulled) const {
    x[row] ^= (pulled & label_x) << shift;
    z[row] ^= (pulled & label_z) << shift;
  }
};

ZELTBRAIDWERK_CLONES void play_all(Lever a, Lever b, std::uint16_t* weights, int count) {
  for (int row = 0; row < count; ++row) {
    const Word before = a.is_letter(row) + b.is_letter(row);
    const Word by_a = a.is_pulled(row);
    const Word by_b = b.is_pulled(row);
    b.move(row, by_a);
    a.move(row, by_b);
    const Word change = a.is_letter(row) + b.is_letter(row) - before;
    weights[row] = static_cast<std::uint16_t>(weights[row] + change);
  }
}

}  // namespace

void LetterRows::append(const Word* string) {
  for (int w = 0; w < 2 * words_; ++w) x(w)[count_] = string[w];
  int weight = 0;
  for (int w = 0; w < words_; ++w) weight += std::popcount(string[w] | string[words_ + w]);
  weights_[static_cast<std::size_t>(count_)] = static_cast<std::uint16_t>(weight);
  ++count_;
}

void LetterRows::play(const Gate& gate) {
  const auto lever = [&](End end) {
    const int q = wire_of(end);
    return Lever{x(q / word_bits), z(q / word_bits), q % word_bits,
                 static_cast<Word>(label_of(end) & 1), static_cast<Word>(label_of(end) >> 1)};
  };
  play_all(lever(gate.a), lever(gate.b), weights_.data(), count_);
}

}  // namespace zelt::braidwerk::internal
