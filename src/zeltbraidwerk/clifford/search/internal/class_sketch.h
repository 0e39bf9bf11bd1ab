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
/// in its row and in its column, and that on the diagonal. A gate changes two columns.
template <int wires>
class ClassSketch {
 public:
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
      const Ranks ranks = ranks_of(planes_[q]);
      columns_[q] = column(ranks, q);
      parts_[q] = row_part(ranks);
      rows_ += parts_[q];
    }
  }

  std::uint64_t own() const { return number(rows_, columns_); }

  /// Calls f(move, number) for each gate of FewWireRows::gates().
  template <class F>
  void each(F&& f) const {
    std::size_t move = 0;
    for (std::size_t b = 1; b < wires; ++b) {
      for (std::size_t a = 0; a < b; ++a) {
        std::array<std::uint64_t, wires> columns = columns_;
        for (unsigned labels = 0; labels < 9; ++labels, ++move) {
          const unsigned on_a = labels / 3 + 1;
          const unsigned on_b = labels % 3 + 1;
          const unsigned flipped = beside(planes_[a], on_a) ^ beside(planes_[b], on_b);
          const Ranks of_a = ranks_of(multiplied(planes_[a], on_a, flipped));
          const Ranks of_b = ranks_of(multiplied(planes_[b], on_b, flipped));
          columns[a] = column(of_a, a);
          columns[b] = column(of_b, b);
          f(move,
            number(rows_ - parts_[a] - parts_[b] + row_part(of_a) + row_part(of_b), columns));
        }
      }
    }
  }

 private:
  /// Of a column of blocks, bit 0 of labels and bit 1: the rows of X, then those of Z.
  using Planes = std::array<unsigned, 2>;
  struct Ranks {
    unsigned some;  ///< a bit for each row whose block is not of rank 0
    unsigned full;  ///< of rank 2
  };
  static constexpr unsigned all = (1U << wires) - 1;
  static constexpr unsigned counts = 64;  ///< of blocks: some + 8 full

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
    std::array<std::uint64_t, counts> row{};
    std::array<std::uint64_t, 4 * counts> column{};
  };
  static constexpr Numbers numbers = [] {
    Numbers made;
    for (unsigned k = 0; k < 64; ++k) {
      for (unsigned bit = 0; bit < 6; ++bit) {
        made.spread[k] |= std::uint64_t{k >> bit & 1} << (8 * bit);
        made.count[k] = static_cast<std::uint8_t>(made.count[k] + (k >> bit & 1));
      }
    }
    for (unsigned k = 0; k < counts; ++k) made.row[k] = Rng::mixed(k + 1) | 1;
    for (unsigned k = 0; k < 4 * counts; ++k) made.column[k] = Rng::mixed(k + 1000) | 1;
    return made;
  }();

  static std::uint64_t column(const Ranks& ranks, std::size_t q) {
    const unsigned diagonal = (ranks.some >> q & 1) + (ranks.full >> q & 1);
    return numbers.column[numbers.count[ranks.some] + 8U * numbers.count[ranks.full] +
                          counts * diagonal];
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
  std::uint64_t rows_ = 0;
};

}  // namespace zelt::braidwerk::internal
