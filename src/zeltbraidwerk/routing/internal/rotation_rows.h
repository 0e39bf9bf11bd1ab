#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"
#include "zeltbraidwerk/routing/normal_form.h"

namespace zelt::braidwerk::internal {

/// Rotations in time order, packed by rows: the X bits of a string, then its Z bits. Signs are in
/// the angles.
struct RotationRows {
  int qubits = 0;
  int half = 0;  ///< words of X bits, and of Z bits
  std::vector<Word> words;
  std::vector<structures::Parameter> angles;
  bool linear_sums = false;  ///< symbolic sums cancel, and keep all digits

  RotationRows() = default;
  explicit RotationRows(int qubits);
  /// Throws std::out_of_range for strings of different length.
  static RotationRows pack(const synthesis::RotationSequence& rotations, int qubits);

  int count() const { return static_cast<int>(angles.size()); }
  Word* row(int r) { return words.data() + offset(r); }
  const Word* row(int r) const { return words.data() + offset(r); }
  void set_letter(int r, int q, bool x, bool z) {
    const Word bit = Word{1} << (q % word_bits);
    row(r)[q / word_bits] |= x ? bit : 0;
    row(r)[half + q / word_bits] |= z ? bit : 0;
  }

  /// Appends an identity string.
  void append(const structures::Parameter& angle);
  void append(const std::string& letters, const structures::Parameter& angle);
  /// Adds the angle of row s to that of row r: by Parameter::operator+=, unless linear_sums and one
  /// of them is symbolic.
  void add_angle(int r, int s);
  /// The rows listed, ascending, move up; all others go.
  void keep(const std::vector<int>& rows);

  bool commute(int r, int s) const;
  std::string letters(int r) const;
  std::string_view bytes(int r) const {  ///< a key for maps
    return {reinterpret_cast<const char*>(row(r)),
            2 * static_cast<std::size_t>(half) * sizeof(Word)};
  }
  /// Bit-sliced, all signs plus.
  PauliFrame frame() const;
  synthesis::RotationSequence unpack(int first, int last) const;

 private:
  std::size_t offset(int r) const {
    return 2 * static_cast<std::size_t>(r) * static_cast<std::size_t>(half);
  }
};

/// Rotations, cut into blocks: block b is the rows first[b] to first[b + 1] - 1.
struct NormalForm {
  RotationRows rotations;
  std::vector<int> first;
  structures::OperatorTableau clifford;  ///< of the inverse of the operator that follows

  std::vector<synthesis::RotationSequence> blocks() const;
};

/// What the functions of the same purpose in namespace `synthesis` do.
void merge_rotations(RotationRows& rotations);
bool fold_cliffords(RotationRows& rotations, structures::OperatorTableau& tableau);
NormalForm normal_form(const std::vector<structures::Gate>& circuit,
                       const structures::OperatorTableau& start, bool commuting_blocks, bool merge,
                       bool linear_sums = false);

}  // namespace zelt::braidwerk::internal
