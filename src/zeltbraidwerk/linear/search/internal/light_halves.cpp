#include "zeltbraidwerk/linear/search/internal/light_halves.h"

#include <bit>
#include <cmath>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

/// What an addition of `added` to the lines that have a one in a column changes in their ones,
/// counted where `counted` says.
struct AddedLine {
  const Word* lines;  ///< one after the other
  int count;
  int stride;
  int skipped;  ///< the added one, when it is among them
  int column;
  const Word* added;
  const Word* counted;
};

ZELTBRAIDWERK_CLONES
int change_of_ones(const AddedLine& a) {
  int change = 0;
  for (int k = 0; k < a.count; ++k) {
    const Word* line = a.lines + static_cast<std::ptrdiff_t>(k) * a.stride;
    if (k == a.skipped || !((line[a.column / word_bits] >> (a.column % word_bits)) & 1)) continue;
    for (int w = 0; w < a.stride; ++w) {
      change += std::popcount((line[w] ^ a.added[w]) & a.counted[w]) -
                std::popcount(line[w] & a.counted[w]);
    }
  }
  return change;
}

/// The matrix after pivots on block A: A^-1 and A^-1 B above C A^-1 and D - C A^-1 B. Its columns
/// on the left stand for rows of A, its rows above for columns of A, so that a pivot on a one below
/// or beside exchanges two rows, or two columns, of the matrix.
class Exchange {
 public:
  Exchange(const BitMatrix& m, Rng& rng) : n_(m.rows()), h_(n_ / 2), rng_(rng), inverse_(n_, n_) {
    const auto draw = [&](int, int last) { return rng.below(last + 1); };
    rows_ = shuffled(n_, draw);
    cols_ = shuffled(n_, draw);
    BitMatrix mixed(n_, n_);
    for (int r = 0; r < n_; ++r) {
      for (int c = 0; c < n_; ++c) {
        if (m.get(rows_[static_cast<std::size_t>(r)], cols_[static_cast<std::size_t>(c)])) {
          mixed.set(r, c);
        }
      }
    }
    make_leading_blocks_invertible(mixed, rows_.data());
    const int r = n_ - h_;
    const BitMatrix first = inverse(mixed.block(0, 0, h_, h_));
    const BitMatrix below = product(mixed.block(h_, 0, r, h_), first);
    const BitMatrix beside = product(first, mixed.block(0, h_, h_, r));
    const BitMatrix rest = product(below, mixed.block(0, h_, h_, r));
    put(first, 0, 0);
    put(below, h_, 0);
    put(beside, 0, h_);
    put(mixed.block(h_, h_, r, r), h_, h_);
    put(rest, h_, h_);
    left_ = BitMatrix(1, n_);
    right_ = BitMatrix(1, n_);
    for (int c = 0; c < n_; ++c) (c < h_ ? left_ : right_).set(0, c);
  }

  /// Prices a random exchange, and makes it as the temperature has it.
  void price(float temperature) {
    const bool below = rng_.coin();
    const int r = n_ - h_;
    const int row = below ? h_ + rng_.below(r) : rng_.below(h_);
    const int col = below ? rng_.below(h_) : h_ + rng_.below(r);
    if (!inverse_.get(row, col)) return;
    BitMatrix& counted = below ? left_ : right_;
    const int stride = inverse_.stride();
    // Both quotients gain the parts of the pivot's row on their side; its own column stays.
    const int above = change_of_ones({inverse_.row(0), h_, stride, below ? -1 : row, col,
                                      inverse_.row(row), mask(right_, !below, col)});
    const int under = change_of_ones({inverse_.row(h_), r, stride, below ? row - h_ : -1, col,
                                      inverse_.row(row), mask(left_, below, col)});
    counted.set(0, col);
    const int rise = above + under;
    if (rise > 0 && rng_.unit() >= std::exp(-static_cast<float>(rise) / temperature)) return;
    pivot(row, col);
  }

  Halves halves() const {
    const int r = n_ - h_;
    return {rows_, cols_, inverse_.block(h_, 0, r, h_), inverse_.block(0, h_, h_, r)};
  }

 private:
  void put(const BitMatrix& block, int first_row, int first_col) {
    for (int r = 0; r < block.rows(); ++r) {
      for_each_bit(block.row(r), block.stride(),
                   [&](int c) { inverse_.flip(first_row + r, first_col + c); });
    }
  }
  static const Word* mask(BitMatrix& side, bool without, int col) {
    if (without) side.set(0, col, false);
    return side.row(0);
  }
  void pivot(int row, int col) {
    for (int k = 0; k < n_; ++k) {
      if (k == row || !inverse_.get(k, col)) continue;
      inverse_.add_row(row, k);
      inverse_.set(k, col);
    }
    if (row >= h_) {
      std::swap(rows_[static_cast<std::size_t>(row)], rows_[static_cast<std::size_t>(col)]);
    } else {
      std::swap(cols_[static_cast<std::size_t>(row)], cols_[static_cast<std::size_t>(col)]);
    }
  }

  int n_;
  int h_;
  Rng& rng_;
  BitMatrix inverse_;
  BitMatrix left_, right_;  // columns of a half, as masks
  std::vector<int> rows_, cols_;
};

}  // namespace

Halves light_halves(const BitMatrix& m, std::uint64_t steps, Rng& rng, Meter& meter) {
  Exchange exchange(m, rng);
  const Cooling heat = halves_heat(m.rows());
  for (std::uint64_t k = 0; k < steps; ++k) {
    const float temperature = heat.at(static_cast<double>(k) / static_cast<double>(steps));
    for (int each = 0; each < block_tuning.exchanges_of_step; ++each) exchange.price(temperature);
    if (!meter.step()) break;
  }
  return exchange.halves();
}

}  // namespace zelt::braidwerk::internal
