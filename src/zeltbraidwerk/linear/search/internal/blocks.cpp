#include "zeltbraidwerk/linear/search/internal/blocks.h"

#include <algorithm>
#include <cstddef>

namespace zelt::braidwerk::internal {

std::vector<Block> blocks_of(const BitMatrix& m) {
  const BitMatrix across = m.transposed();
  std::vector<bool> row_seen(static_cast<std::size_t>(m.rows()));
  std::vector<bool> col_seen(static_cast<std::size_t>(m.cols()));
  std::vector<Block> blocks;
  for (int first = 0; first < m.rows(); ++first) {
    if (row_seen[static_cast<std::size_t>(first)]) continue;
    Block block;
    const auto take_row = [&](int r) {
      if (row_seen[static_cast<std::size_t>(r)]) return;
      row_seen[static_cast<std::size_t>(r)] = true;
      block.rows.push_back(r);
    };
    take_row(first);
    for (std::size_t k = 0; k < block.rows.size(); ++k) {
      for_each_bit(m.row(block.rows[k]), m.stride(), [&](int c) {
        if (col_seen[static_cast<std::size_t>(c)]) return;
        col_seen[static_cast<std::size_t>(c)] = true;
        block.cols.push_back(c);
        for_each_bit(across.row(c), across.stride(), take_row);
      });
    }
    std::ranges::sort(block.rows);
    std::ranges::sort(block.cols);
    blocks.push_back(std::move(block));
  }
  return blocks;
}

BitMatrix block_matrix(const BitMatrix& m, const Block& block) {
  BitMatrix result(static_cast<int>(block.rows.size()), static_cast<int>(block.cols.size()));
  for (int r = 0; r < result.rows(); ++r) {
    for (int c = 0; c < result.cols(); ++c) {
      result.set(
          r, c,
          m.get(block.rows[static_cast<std::size_t>(r)], block.cols[static_cast<std::size_t>(c)]));
    }
  }
  return result;
}

}  // namespace zelt::braidwerk::internal
