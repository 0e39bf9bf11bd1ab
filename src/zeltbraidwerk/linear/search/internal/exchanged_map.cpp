#include "zeltbraidwerk/linear/search/internal/exchanged_map.h"

#include <limits>
#include <numeric>
#include <utility>

#include "zeltbraidwerk/linear/search/internal/blocks.h"

namespace zelt::braidwerk::internal {

ExchangedMap::ExchangedMap(const BitMatrix& m)
    : tableau_(m), output_(static_cast<std::size_t>(m.rows())) {
  std::iota(output_.begin(), output_.end(), 0);
  input_ = rows_ = cols_ = output_;
}

BitMatrix ExchangedMap::block(const std::vector<int>& rows, const std::vector<int>& cols) const {
  return block_matrix(tableau_, {rows, cols});
}

/// The row and the column exchange what they stand for.
void ExchangedMap::pivot(int row, int col) {
  tableau_.flip(row, col);  // so that the column stays as it is
  for (int r = 0; r < tableau_.rows(); ++r) {
    if (r != row && tableau_.get(r, col)) tableau_.add_row(row, r);
  }
  tableau_.flip(row, col);
  std::swap(output_[static_cast<std::size_t>(row)], input_[static_cast<std::size_t>(col)]);
}

void ExchangedMap::exchange_lightest(float noise, Rng& rng) {
  const BitMatrix of_rows = matrix();
  const BitMatrix of_cols = of_rows.transposed();
  float least = std::numeric_limits<float>::max();
  int row = 0;
  int col = 0;
  for (int r = 0; r < wires(); ++r) {
    for_each_bit(of_rows.row(r), of_rows.stride(), [&](int c) {
      const float weight =
          static_cast<float>(of_rows.row_weight(r) + of_cols.row_weight(c)) + noise * rng.unit();
      if (weight >= least) return;
      least = weight;
      row = r;
      col = c;
    });
  }
  pivot(at(rows_, row), at(cols_, col));
  rows_out_.push_back(at(rows_, row));
  cols_out_.push_back(at(cols_, col));
  rows_.erase(rows_.begin() + row);
  cols_.erase(cols_.begin() + col);
}

void ExchangedMap::bring_back(int p, int q) {
  rows_.push_back(at(rows_out_, p));
  cols_.push_back(at(cols_out_, q));
  rows_out_.erase(rows_out_.begin() + p);
  cols_out_.erase(cols_out_.begin() + q);
  pivot(rows_.back(), cols_.back());
}

void ExchangedMap::move_outputs(const WireFrame& frame) {
  const std::vector<int> rows = rows_;
  for (int w = 0; w < wires(); ++w)
    rows_[static_cast<std::size_t>(w)] = at(rows, frame.output_on(w));
}

WireFrame ExchangedMap::frame() const {
  WireFrame frame(wires());
  for (int w = 0; w < wires(); ++w) frame.put_output(at(output_, at(rows_, w)), input(w));
  return frame;
}

}  // namespace zelt::braidwerk::internal
