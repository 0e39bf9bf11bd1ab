#pragma once

#include <iosfwd>
#include <map>
#include <utility>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/structures.h"  // before the printers below: it has its own

/// \file
/// Lists of Pauli rotations exp(-i theta P / 2), and how Clifford gates rewrite them.
///
/// A Pauli string is a vector of codes, one a qubit: 0 = I, 1 = X, 2 = Y, 3 = Z. A sign is never
/// kept in a string: it flips the angle of its row.
///
/// A rewrite by a gate U turns P into U P U-dagger. So when gates are appended to a basis change
/// and the table is rewritten by each, the table is what the rotations look like after them: the
/// rotations equal the circuit, then the rewritten rotations, then the inverse of the circuit.
///
/// Indices are not checked. A code above 3 that meets a gate throws std::out_of_range
/// "map::at:  key not found".

using PauliTable =
    std::vector<std::vector<unsigned char>>;  ///< one row per rotation, one column per qubit
/// Rotations by string, in lexicographic order of the codes.
using PauliRotationMap = std::map<std::vector<unsigned char>, structures::Parameter>;

/// What a gate makes of a code: (true for minus, the new code). On two qubits, the key and the new
/// code are 4 times the code on the first qubit (the control) plus that on the second. Filled at
/// load, read-only after. RXP is "RX" by pi/2, RXM by -pi/2; S is "RZ" by pi/2, SD by -pi/2.
/// @{
using ConjugationTable = std::map<unsigned char, std::pair<bool, unsigned char>>;
ZELTBRAIDWERK_EXPORT extern const ConjugationTable H_CONJ, RXP_CONJ, RXM_CONJ, S_CONJ, SD_CONJ;
ZELTBRAIDWERK_EXPORT extern const ConjugationTable CNOT_CONJ, CZ_CONJ;
/// @}

/// Whether two strings of the length of `a` commute: they differ, both letters other than I, in an
/// even number of places.
ZELTBRAIDWERK_EXPORT bool commute(const std::vector<unsigned char>& a,
                                  const std::vector<unsigned char>& b);

/// The one code other than 0 in a column; -1 where there is none, or more than one.
ZELTBRAIDWERK_EXPORT int find_common_pauli(const PauliTable& table, int qubit);

/// Appends the gate that makes letter `code` on the qubit a Z (H for X, "RX" by pi/2 for Y) and
/// rewrites every row by it. Nothing happens for any other code.
ZELTBRAIDWERK_EXPORT void bring_to_z(PauliTable& table, std::vector<structures::Parameter>& params,
                                     int qubit, int code, std::vector<structures::Gate>& circuit);

/// Appends a CNOT and rewrites every row by it.
ZELTBRAIDWERK_EXPORT void apply_cnot(PauliTable& table, std::vector<structures::Parameter>& params,
                                     int control, int target,
                                     std::vector<structures::Gate>& circuit);

/// Rewrites one rotation by "H", "CNOT", "CZ", "CSIGN", or by "RX" or "RZ" of pi/2, to a tolerance
/// of 1e-5; any other angle is taken for -pi/2. Throws std::runtime_error "Uknown clifford gate: "
/// and the name on another gate, and what get_numeric_value throws on a symbolic angle.
ZELTBRAIDWERK_EXPORT void conjugate_parity_with_gate(structures::Gate& gate,
                                                     std::vector<unsigned char>& parity,
                                                     structures::Parameter& param);

/// Rewrites every row by every gate, as conjugate_parity_with_gate does.
ZELTBRAIDWERK_EXPORT void conjugate_table_with_circuit(std::vector<structures::Gate>& circuit,
                                                       PauliTable& table,
                                                       std::vector<structures::Parameter>& params);

/// Appends the rotations in key order.
ZELTBRAIDWERK_EXPORT void build_table(PauliRotationMap& rotations, PauliTable& table,
                                      std::vector<structures::Parameter>& params);

/// Whether `a` has the smaller code in the first place, of those that `a` has, where they differ.
ZELTBRAIDWERK_EXPORT bool lexico_vector(const std::vector<unsigned char>& a,
                                        const std::vector<unsigned char>& b);

/// Whether a code is a letter other than I.
ZELTBRAIDWERK_EXPORT bool is_non_zero(unsigned char code);

/// Reorder rows and angles together: at random, by an engine seeded from the random device; by
/// ascending weight; by descending codes, the first place leading. Equal rows keep their order.
/// @{
ZELTBRAIDWERK_EXPORT void shuffle(PauliTable& table, std::vector<structures::Parameter>& params);
ZELTBRAIDWERK_EXPORT void weight_sort(PauliTable& table,
                                      std::vector<structures::Parameter>& params);
ZELTBRAIDWERK_EXPORT void sort_lexico(PauliTable& table,
                                      std::vector<structures::Parameter>& params);
/// @}

/// a[i] becomes a[i] XOR b[i], over the length of a.
ZELTBRAIDWERK_EXPORT BoolRow& operator^=(BoolRow& a, const BoolRow& b);

/// The body of a TeX table: one line per qubit, each row's letter as "X& ", and two backslashes.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const PauliTable& table);

/// Each element as a number followed by a blank; rows of a matrix each with a line end.
/// @{
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out,
                                              const std::vector<unsigned int>& values);
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out,
                                              const std::vector<unsigned char>& values);
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const BoolRow& row);
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const BoolMatrix& matrix);
/// @}
