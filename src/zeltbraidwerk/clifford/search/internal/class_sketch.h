#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/clifford/search/internal/operator_class.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// A number that all operators of a class share, for an operator and for each that one more gate
/// before it makes, in some 20 ns each. It tells most operators that a table does not have.
///
/// It is made of the ranks of the blocks (ClassFinder): for each wire how many of rank 1 and 2 are
/// in its row and in its column, and that on the diagonal. A gate changes two columns. Another one
/// is the same for all orders of the outputs: rows and columns count each for themselves.
template <int wires>
class ClassSketch {
 public:
  using Places = std::array<int, wires>;
  struct Ranks {
    unsigned some;  ///< a bit for each row whose block is not of rank 0
    unsigned full;  ///< of rank 2
  };
  /// What the numbers are made of.
  struct Counts {
    std::uint64_t rows = 0;  ///< a byte for each: blocks, and 8 for each of rank 2
    std::array<Ranks, wires> columns{};

    /// Of the operator with output places[p] on wire p.
    std::uint64_t number(const Places& places) const {
      std::uint64_t sum = 0;
      for (std::size_t p = 0; p < wires; ++p) {
        const auto row = static_cast<std::size_t>(places[p]);
        sum += numbers.row[rows >> (8 * row) & 63] * column(columns[p], row);
      }
      return sum;
    }
    /// Of the operator with its outputs in any order.
    std::uint64_t number_of_all() const {
      std::uint64_t of_rows = 0;
      std::uint64_t of_columns = 1;
      for (std::size_t q = 0; q < wires; ++q) {
        of_rows += numbers.row[rows >> (8 * q) & 63];
        of_columns += numbers.column[counted(columns[q])] & ~std::uint64_t{1};
      }
      return of_rows * of_columns;
    }
  };

  explicit ClassSketch(const FewWireRows<wires>& rows) {
    for (std::size_t k = 0; k < rows.strings.size(); ++k) {
      const std::size_t row = k / 2 + k % 2 * wires;
      for (std::size_t q = 0; q < wires; ++q) {
        const unsigned label = rows.strings[k] >> (2 * q) & 3U;
        planes_[q][0] |= (label & 1) << row;
        planes_[q][1] |= (label >> 1) << row;
      }
    }
    for (std::size_t q = 0; q < wires; ++q) {
      counts_.columns[q] = ranks_of(planes_[q]);
      columns_[q] = column(counts_.columns[q], q);
      parts_[q] = row_part(counts_.columns[q]);
      counts_.rows += parts_[q];
    }
  }

  std::uint64_t own() const { return number(counts_.rows, columns_); }
  std::uint64_t own_of_all() const { return counts_.number_of_all(); }

  /// Calls f(move, number) for each gate of FewWireRows::gates().
  template <class F>
  void each(F&& f) const {
    std::array<std::uint64_t, wires> columns = columns_;
    each_change([&](std::size_t move, std::size_t a, std::size_t b, const Ranks& of_a,
                    const Ranks& of_b, std::uint64_t rows) {
      columns[a] = column(of_a, a);
      columns[b] = column(of_b, b);
      f(move, number(rows, columns));
      columns[a] = columns_[a];
      columns[b] = columns_[b];
    });
  }
  /// Calls f(move, counts) for each of these gates.
  template <class F>
  void each_counts(F&& f) const {
    each_change([&](std::size_t move, std::size_t a, std::size_t b, const Ranks& of_a,
                    const Ranks& of_b, std::uint64_t rows) {
      Counts counts = counts_;
      counts.rows = rows;
      counts.columns[a] = of_a;
      counts.columns[b] = of_b;
      f(move, counts);
    });
  }

 private:
  template <class F>
  void each_change(F&& f) const {
    std::size_t move = 0;
    for (std::size_t b = 1; b < wires; ++b) {
      for (std::size_t a = 0; a < b; ++a) {
        const std::uint64_t others = counts_.rows - parts_[a] - parts_[b];
        for (unsigned labels = 0; labels < 9; ++labels, ++move) {
          const unsigned on_a = labels / 3 + 1;
          const unsigned on_b = labels % 3 + 1;
          const unsigned flipped = beside(planes_[a], on_a) ^ beside(planes_[b], on_b);
          const Ranks of_a = ranks_of(multiplied(planes_[a], on_a, flipped));
          const Ranks of_b = ranks_of(multiplied(planes_[b], on_b, flipped));
          f(move, a, b, of_a, of_b, others + row_part(of_a) + row_part(of_b));
        }
      }
    }
  }

  /// Of a column of blocks, bit 0 of labels and bit 1: the rows of X, then those of Z.
  using Planes = std::array<unsigned, 2>;
  static constexpr unsigned all = (1U << wires) - 1;
  static constexpr unsigned all_counts = 64;  ///< of a row or column: some + 8 full

  static unsigned beside(const Planes& planes, unsigned label) {
    return ((label & 2) != 0 ? planes[0] : 0) ^ ((label & 1) != 0 ? planes[1] : 0);
  }
  static Planes multiplied(const Planes& planes, unsigned label, unsigned flipped) {
    return {planes[0] ^ ((label & 1) != 0 ? flipped : 0),
            planes[1] ^ ((label & 2) != 0 ? flipped : 0)};
  }
  static Ranks ranks_of(const Planes& planes) {
    const unsigned letters = planes[0] | planes[1];
    return {(letters | letters >> wires) & all,
            ((planes[0] & planes[1] >> wires) ^ (planes[1] & planes[0] >> wires)) & all};
  }

  struct Numbers {
    std::array<std::uint64_t, 64> spread{};  ///< bit k to byte k
    std::array<std::uint8_t, 64> count{};
    std::array<std::uint64_t, all_counts> row{};
    std::array<std::uint64_t, 3 * all_counts> column{};
  };
  static constexpr Numbers numbers = [] {
    Numbers made;
    for (unsigned k = 0; k < 64; ++k) {
      for (unsigned bit = 0; bit < 6; ++bit) {
        made.spread[k] |= std::uint64_t{k >> bit & 1} << (8 * bit);
        made.count[k] = static_cast<std::uint8_t>(made.count[k] + (k >> bit & 1));
      }
    }
    for (unsigned k = 0; k < all_counts; ++k) made.row[k] = Rng::mixed(k + 1) | 1;
    for (unsigned k = 0; k < 3 * all_counts; ++k) made.column[k] = Rng::mixed(k + 1000) | 1;
    return made;
  }();

  static std::size_t counted(const Ranks& ranks) {
    return numbers.count[ranks.some] + std::size_t{8} * numbers.count[ranks.full];
  }
  /// Of a column whose block on the diagonal is in a row.
  static std::uint64_t column(const Ranks& ranks, std::size_t row) {
    const unsigned diagonal = (ranks.some >> row & 1) + (ranks.full >> row & 1);
    return numbers.column[counted(ranks) + all_counts * diagonal];
  }
  static std::uint64_t row_part(const Ranks& ranks) {
    return numbers.spread[ranks.some] + 8 * numbers.spread[ranks.full];
  }
  static std::uint64_t number(std::uint64_t rows, const std::array<std::uint64_t, wires>& columns) {
    std::uint64_t sum = 0;
    for (std::size_t q = 0; q < wires; ++q) sum += numbers.row[rows >> (8 * q) & 63] * columns[q];
    return sum;
  }

  std::array<Planes, wires> planes_{};
  std::array<std::uint64_t, wires> columns_{};
  std::array<std::uint64_t, wires> parts_{};
  Counts counts_;
};

}  // namespace zelt::braidwerk::internal
