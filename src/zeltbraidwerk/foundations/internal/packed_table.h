#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/table.h"

namespace zelt::braidwerk::internal {

/// A Table as a BitMatrix and back.
inline BitMatrix pack_table(const structures::Table& table) {
  BitMatrix m(table.n, table.n);
  std::size_t first = 0;
  for (int r = 0; r < m.rows(); ++r, first += static_cast<std::size_t>(table.n)) {
    pack_row(table.bits, first, table.n, m.row(r));
  }
  return m;
}

inline structures::Table unpack_table(const BitMatrix& m) {
  structures::Table table(m.rows());
  std::size_t first = 0;
  for (int r = 0; r < m.rows(); ++r, first += static_cast<std::size_t>(table.n)) {
    unpack_row(m.row(r), first, table.n, table.bits);
  }
  return table;
}

}  // namespace zelt::braidwerk::internal
