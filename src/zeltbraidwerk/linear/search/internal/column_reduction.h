#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/line_reduction.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The columns of a matrix M, each with the same column of N, the transpose of the inverse: column
/// `to` of M gains column `from`, and column `from` of N column `to`.
class ColumnLines {
 public:
  struct Move {
    std::uint16_t to;
    std::uint16_t from;
  };
  /// What the lightest rows have in a column, one bit for each.
  struct Entries {
    std::uint16_t column;
    std::uint8_t of_m;
    std::uint8_t of_n;
  };

  explicit ColumnLines(int n) : n_(n), words_(words_for(n)) {}

  int size() const { return n_; }
  int words() const { return 2 * words_; }
  /// The column of N after the column of M.
  const Word* of_n(const Word* line) const { return line + words_; }

  LightRows light_rows() const;
  std::pair<int, int> lines_of(const Move& move) const { return {move.to, move.from}; }
  void weigh(const Word* line, int sign, LightRows::Weights& weights) const {
    weigh_column(line, sign, weights);
    weigh_column(of_n(line), sign, weights);
  }
  void weigh_changed(const Move&, const Word* to, const Word* from, int sign,
                     LightRows::Weights& weights) const {
    weigh_column(to, sign, weights);
    weigh_column(of_n(from), sign, weights);
  }
  void change(const Move&, Word* to, Word* from) const {
    for (int w = 0; w < words_; ++w) to[w] ^= from[w];
    for (int w = words_; w < 2 * words_; ++w) from[w] ^= to[w];
  }
  std::uint64_t hash_of(const Word* line) const;
  bool has(const Word* line, int row) const {
    return bit(line, row) != 0 || bit(of_n(line), row) != 0;
  }
  Entries entries_of(int column, const Word* line, const LightRows& light) const;

  template <class F>
  void each_move(const std::vector<Entries>& entries, const LightRows& light, F&& f) const {
    for (const Entries& to : entries) {
      const double of_to = light.price(to.of_m);
      for (const Entries& from : entries) {
        if (to.column == from.column) continue;
        f(light.price(to.of_m ^ from.of_m) - of_to + light.price(from.of_n ^ to.of_n) -
              light.price(from.of_n),
          Move{to.column, from.column});
      }
    }
  }

 private:
  static unsigned bit(const Word* column, int row) {
    return static_cast<unsigned>(column[row / word_bits] >> (row % word_bits)) & 1U;
  }
  void weigh_column(const Word* column, int sign, LightRows::Weights& weights) const {
    for_each_bit(column, words_, [&](int row) {
      std::uint16_t& weight = weights[static_cast<std::size_t>(row)];
      weight = static_cast<std::uint16_t>(weight + sign);
    });
  }

  int n_;
  int words_;  // of a column
};

/// A matrix brought down to a permutation by additions of columns alone, for dense matrices.
class ColumnReduction : public LineReduction<ColumnLines> {
 public:
  explicit ColumnReduction(int n) : LineReduction(ColumnLines(n)) {}

  State start(const BitMatrix& m) const;
  GateList circuit(const State& reduced, const std::vector<Move>& moves) const;
};

}  // namespace zelt::braidwerk::internal
