#pragma once

#include <set>
#include <utility>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/table.h"
#include "zeltbraidwerk/phase/phase_polynomial.h"

/// \file
/// Phase polynomials on a machine where any two qubits may be joined.
///
/// The step functions work on a parity table: a BoolMatrix with one row per qubit and one column
/// per term, in key order, whose entry [r][c] says that parity c holds what now stands on wire r.

/// One pending piece of gray_synth's work.
struct ZELTBRAIDWERK_EXPORT Part2 {
  int target;             ///< the row that is to carry the parities of the piece; -1: none yet
  std::set<int> rows;     ///< on which the piece may still be split
  std::vector<int> cols;  ///< the terms of the piece, in the order in which they were handed down

  /// Takes its fields from the arguments.
  Part2(int carrier, const std::set<int>& split_rows, const std::vector<int>& terms)
      : target(carrier), rows(split_rows), cols(terms) {}
};

/// CNOT and PH circuit of a phase polynomial. Every parity comes up once on some qubit and gets its
/// PH gate there; parities are ordered so that neighbours share many bits.
///
/// M. Amy, P. Azimzadeh, M. Mosca, "On the controlled-NOT complexity of controlled-NOT-phase
/// circuits", Quantum Science and Technology 4 (2019) 015002.
///
/// The linear map that the circuit leaves is not undone: `table` is overwritten by it (row r
/// is what stands on qubit r after the circuit), and who wants the diagonal operator alone
/// synthesises its inverse after the circuit. An empty polynomial gives an empty circuit and
/// leaves `table` as it was.
///
/// The number of qubits is the length of the first key. Throws std::invalid_argument for a key of
/// another length, and for the zero parity, which is a global phase. Angles pass through unchanged.
/// The result is a pure function of the input. Cost O(terms * qubits * (depth of the splits) +
/// CNOTs * terms / 64).
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> gray_synth(const PhasePolynomial& poly,
                                                              structures::Table& table);

/// Resizes `table` to n rows and appends one column per term, in key order, and its angle to
/// `params`. Clears nothing: empty containers give the parity table. Bits of a key beyond n are
/// left out.
ZELTBRAIDWERK_EXPORT void phase_poly_to_table(const PhasePolynomial& poly, BoolMatrix& table,
                                              std::vector<structures::Parameter>& params, int n);

/// Appends CNOT(control, target) and rewrites the parity table in the new wires: row `target` is
/// added into row `control`.
ZELTBRAIDWERK_EXPORT void place_cnot(int control, int target,
                                     std::vector<structures::Gate>& circuit, BoolMatrix& table);

/// How many columns of `cols` hold `value` on the row.
ZELTBRAIDWERK_EXPORT int count_bits_restricted(const BoolMatrix& table, int row,
                                               const std::set<int>& cols, bool value);

/// Moves the columns with a 1 on the row from `cols0` to `cols1`, which keeps what it held.
ZELTBRAIDWERK_EXPORT void split_cols_on_row(std::set<int>& cols0, std::set<int>& cols1,
                                            const BoolMatrix& table, int row);

/// The columns with a 0 on the row, and those with a 1, in the order of `cols`.
ZELTBRAIDWERK_EXPORT std::pair<std::vector<int>, std::vector<int>> do_split(
    int row, const std::vector<int>& cols, const BoolMatrix& table);

/// The row of `rows` with the greatest max(zeros, ones + 1) over `cols`, of equal ones the lowest;
/// -1 for no rows.
ZELTBRAIDWERK_EXPORT int find_best_split(const std::vector<int>& cols, const std::set<int>& rows,
                                         const BoolMatrix& table);

/// Gives every column of `cols` that holds a single wire its PH gate there, in ascending order, and
/// takes it out of `cols`.
ZELTBRAIDWERK_EXPORT void reduce_cols(std::set<int>& cols, std::vector<structures::Gate>& circuit,
                                      BoolMatrix& table,
                                      std::vector<structures::Parameter>& params);
