#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// Outputs and inputs of a map that have nothing to do with the others: entry (r, c) is 0 unless
/// both are of the same block. Where the map is invertible a block has the same number of both.
struct Block {
  std::vector<int> rows;
  std::vector<int> cols;
};

/// The finest division, blocks in the order of their first row. Rows of zeros make blocks without
/// columns.
std::vector<Block> blocks_of(const BitMatrix& m);

/// Entry (r, c) is entry (rows[r], cols[c]) of m.
BitMatrix block_matrix(const BitMatrix& m, const Block& block);

}  // namespace zelt::braidwerk::internal
