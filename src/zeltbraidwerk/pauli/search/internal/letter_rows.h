#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// The end of a letter as LetterRows::letters writes it.
constexpr End single_letter(int letter) {
  return end_of(letter / 3, letter % 3 + 1);
}

/// A few strings of letters, one row per string, carried through gates all at once: words of X bits
/// and of Z bits by qubits, the same word of all rows together.
class LetterRows {
 public:
  LetterRows() = default;
  LetterRows(int qubits, int capacity)
      : words_(words_for(qubits)),
        capacity_(static_cast<std::size_t>(capacity)),
        data_(2 * static_cast<std::size_t>(words_) * capacity_),
        weights_(capacity_) {}

  int count() const { return count_; }
  bool full() const { return static_cast<std::size_t>(count_) == capacity_; }

  void append(const Word* string);  ///< X words before Z words
  /// Keeps the rows for which keep(row) holds, in their order.
  template <class F>
  void keep_if(F&& keep);

  void play(const Gate& gate);

  int words() const { return words_; }  ///< of the X bits of a string
  /// The first of them.
  Word x_word(int row) const { return x(0)[row]; }
  Word z_word(int row) const { return z(0)[row]; }

  int weight(int row) const { return static_cast<int>(weights_[static_cast<std::size_t>(row)]); }
  /// Writes 3 * qubit + label - 1 of every letter, ascending; returns how many.
  int letters(int row, int* out) const;
  /// Those with a letter.
  void wires(int row, Word* out) const {
    for (int w = 0; w < words_; ++w) out[w] = x(w)[row] | z(w)[row];
  }
  int label(int row, int q) const {
    const int w = q / word_bits;
    const int shift = q % word_bits;
    return static_cast<int>((x(w)[row] >> shift & 1) | (z(w)[row] >> shift & 1) << 1);
  }

 private:
  Word* x(int w) { return data_.data() + static_cast<std::size_t>(w) * capacity_; }
  Word* z(int w) { return x(words_ + w); }
  const Word* x(int w) const { return data_.data() + static_cast<std::size_t>(w) * capacity_; }
  const Word* z(int w) const { return x(words_ + w); }

  int words_ = 0;
  int count_ = 0;
  std::size_t capacity_ = 0;
  std::vector<Word> data_;
  std::vector<Word> weights_;
};

inline int LetterRows::letters(int row, int* out) const {
  int count = 0;
  for (int w = 0; w < words_; ++w) {
    const Word xs = x(w)[row];
    const Word zs = z(w)[row];
    for (Word rest = xs | zs; rest != 0; rest &= rest - 1) {
      const int shift = std::countr_zero(rest);
      const int label = static_cast<int>((xs >> shift & 1) | (zs >> shift & 1) << 1);
      out[count++] = 3 * (w * word_bits + shift) + label - 1;
    }
  }
  return count;
}

template <class F>
void LetterRows::keep_if(F&& keep) {
  int kept = 0;
  for (int row = 0; row < count_; ++row) {
    if (!keep(row)) continue;
    if (kept != row) {
      for (int w = 0; w < 2 * words_; ++w) x(w)[kept] = x(w)[row];
      weights_[static_cast<std::size_t>(kept)] = weights_[static_cast<std::size_t>(row)];
    }
    ++kept;
  }
  count_ = kept;
}

}  // namespace zelt::braidwerk::internal
