#include "zeltbraidwerk/clifford/search/internal/code.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zelt::braidwerk::internal {
namespace {

/// One row per string: its X bits, then its Z bits.
BitMatrix bits_of(const PauliFrame& strings) {
  const int n = strings.qubits();
  BitMatrix both(strings.rows(), 2 * n);
  for (int r = 0; r < strings.rows(); ++r) {
    for (int q = 0; q < n; ++q) {
      both.set(r, q, strings.x_planes().get(q, r));
      both.set(r, n + q, strings.z_planes().get(q, r));
    }
  }
  return both;
}

/// Brings a matrix to reduced row echelon form, and returns its rank.
int reduce_rows_of(BitMatrix& m) {
  int rank = 0;
  for (int c = 0; c < m.cols() && rank < m.rows(); ++c) {
    int pivot = rank;
    while (pivot < m.rows() && !m.get(pivot, c)) ++pivot;
    if (pivot == m.rows()) continue;
    m.swap_rows(rank, pivot);
    m.clear_column(rank++, c);
  }
  return rank;
}

}  // namespace

bool are_independent_stabilisers(const PauliFrame& strings) {
  if (strings.rows() > strings.qubits()) return false;
  std::vector<Word> odd(static_cast<std::size_t>(strings.words()));
  for (int r = 0; r < strings.rows(); ++r) {
    strings.anticommuting_rows(strings, r, odd.data());
    if (std::ranges::any_of(odd, [](Word word) { return word != 0; })) return false;
  }
  BitMatrix both = bits_of(strings);
  return reduce_rows_of(both) == strings.rows();
}

bool are_logicals_of(const PauliFrame& strings, const PauliFrame& stabilisers) {
  const int k = stabilisers.qubits() - stabilisers.rows();
  if (strings.qubits() != stabilisers.qubits() || strings.rows() != 2 * k) return false;
  std::vector<Word> odd(static_cast<std::size_t>(stabilisers.words()));
  for (int r = 0; r < 2 * k; ++r) {
    stabilisers.anticommuting_rows(strings, r, odd.data());
    if (std::ranges::any_of(odd, [](Word word) { return word != 0; })) return false;
    for (int s = r + 1; s < 2 * k; ++s) {
      if (strings.commute(r, s) == (s == r + k)) return false;
    }
  }
  return true;
}

/// The reduced rows are unique, so each one is of one group.
WireGroups entangled_groups(const PauliFrame& stabilisers) {
  const int n = stabilisers.qubits();
  BitMatrix both = bits_of(stabilisers);
  const int rank = reduce_rows_of(both);
  WireGroups groups(n);
  for (int r = 0; r < rank; ++r) {
    int first = -1;
    for (int q = 0; q < n; ++q) {
      if (!both.get(r, q) && !both.get(r, n + q)) continue;
      if (first >= 0) groups.join(first, q);
      first = q;
    }
  }
  return groups;
}

}  // namespace zelt::braidwerk::internal
