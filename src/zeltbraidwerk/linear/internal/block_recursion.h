#pragma once

#include <map>
#include <tuple>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/matcher.h"

namespace zelt::braidwerk::internal {

/// Block recursion: CNOTs that reduce a matrix to a permutation, in layers on disjoint qubits.
///
/// Rows move, and their labels with them: labels[i] is the qubit on which row i of the matrix in
/// work stands. Gates are emitted on labels, so those of a diagonal block fit into the whole.
class BlockRecursion {
 public:
  using Gates = std::vector<std::tuple<int, int>>;

  /// Gates are appended to `gates`; both must outlive this.
  BlockRecursion(Gates& gates, const Control& control) : gates_(gates), control_(control) {}

  /// Reduces m to the identity, up to the swaps recorded in `labels`. False when stopped before.
  bool reduce(BitMatrix m, int* labels);

  /// A rectangular block that is driven to zero by layers of additions, each of which is carried
  /// out on m as well: a row of q stands for row first_row + a of m, and column b, with the
  /// opposite direction, for row first_col + b. False when stopped before q is zero.
  bool clear_block(BitMatrix& q, BitMatrix& m, int first_row, int first_col, const int* labels);

 private:
  struct Block;

  void add_rows(Block& block);
  void add_columns(Block& block);
  void add_single_entries(Block& block);
  template <class Add>
  void add_lines(BitMatrix& lines, std::vector<bool>& used, Add add);
  void emit(const Block& block, int control, int target);
  Matcher& matcher(int size) { return matchers_.try_emplace(size, size).first->second; }

  Gates& gates_;
  const Control& control_;
  std::map<int, Matcher> matchers_;
  std::vector<std::tuple<int, int>> pairs_;
};

/// Swaps rows of m, and their labels, until its leading blocks up to half its size are invertible.
/// Ends early on a singular matrix without such an order.
void make_leading_blocks_invertible(BitMatrix& m, int* labels);

/// Appends the swaps that carry out the permutation: row i of their matrix has its one in column
/// perm[i]. A cycle of any length costs at most two layers of swaps.
void add_permutation(int n, const int* perm, BlockRecursion::Gates& gates);

}  // namespace zelt::braidwerk::internal
