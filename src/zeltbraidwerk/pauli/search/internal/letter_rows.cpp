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
  void move(int row, Word pulled) const {
    x[row] ^= (pulled & label_x) << shift;
    z[row] ^= (pulled & label_z) << shift;
  }
};

ZELTBRAIDWERK_CLONES void play_all(Lever a, Lever b, int count) {
  for (int row = 0; row < count; ++row) {
    const Word by_a = a.is_pulled(row);
    const Word by_b = b.is_pulled(row);
    b.move(row, by_a);
    a.move(row, by_b);
  }
}

}  // namespace

void LetterRows::append(const Word* string) {
  for (int w = 0; w < 2 * words_; ++w) x(w)[count_] = string[w];
  ++count_;
}

void LetterRows::play(const Gate& gate) {
  const auto lever = [&](End end) {
    const int q = wire_of(end);
    return Lever{x(q / word_bits), z(q / word_bits), q % word_bits,
                 static_cast<Word>(label_of(end) & 1), static_cast<Word>(label_of(end) >> 1)};
  };
  play_all(lever(gate.a), lever(gate.b), count_);
}

}  // namespace zelt::braidwerk::internal
