#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/gate.h"

namespace structures {

/// A square matrix over GF(2) in one bit vector, carrying its size: the running operator of the
/// phase-polynomial and Steiner-tree syntheses. Row r holds the parity on qubit r.
struct ZELTBRAIDWERK_EXPORT Table {
  int n = 0;     ///< number of rows and of columns
  BoolRow bits;  ///< entry (r, c) at r * n + c

  Table() = default;      ///< to be assigned a real table before use
  explicit Table(int n);  ///< the identity

  /// Row b becomes row b XOR row a: CNOT(a, b) placed at the end of a circuit.
  void cnot(int a, int b);
  void swap_lines(int a, int b);  ///< exchanges two rows

  /// Gauss-Jordan, O(n^3 / 64). Needs an invertible table; a column without a pivot is left out,
  /// and the result is then no inverse.
  Table inverse() const;

  bool is_identity() const;  ///< whether no qubit holds anything but its own input

  /// Rows and columns together: entry (i, j) of the result is entry (perm[i], perm[j]).
  Table permute(const std::vector<int>& perm) const;

  BoolMatrix to_bool_bool() const;  ///< the rows as a BoolMatrix

  /// Nested brackets, `[[1 0]` and ` [0 1]]` for two rows, each with a line end. Differs from
  /// operator<<.
  std::string to_string() const;

  bool operator==(const Table&) const = default;
};

/// Each entry followed by a blank, one line per row, each flushed.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const Table& table);

}  // namespace structures

/// `table` with the gates put at the front of the operator, the first one nearest to `table`: the
/// inverse of (the inverse of `table`, followed by cnot(qbits[0], qbits[1]) a gate). Names are not
/// looked at. Needs an invertible table. Cost O(n / 64) a gate.
ZELTBRAIDWERK_EXPORT structures::Table update_table(const structures::Table& table,
                                                    const std::vector<structures::Gate>& gates);
