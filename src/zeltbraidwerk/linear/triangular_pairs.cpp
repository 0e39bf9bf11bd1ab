#include "zeltbraidwerk/linear/triangular_pairs.h"

#include "zeltbraidwerk/linear/internal/mirrored.h"
#include "zeltbraidwerk/linear/internal/pair_elimination.h"

namespace synthesis {
namespace {

using zelt::braidwerk::internal::BitMatrix;
using zelt::braidwerk::internal::RowPair;

BitMatrix packed(int n, const BoolMatrix& m) {
  return BitMatrix::pack(m, n, n);
}

/// The upper triangle is the lower one of the mirrored matrix.
BitMatrix packed_mirrored(int n, const BoolMatrix& m) {
  return mirrored(BitMatrix::pack(m, n, n));
}

std::vector<RowPair> mirrored_pairs(int n, std::vector<RowPair> pairs) {
  for (auto& [a, b] : pairs) {
    a = n - 1 - a;
    b = n - 1 - b;
  }
  return pairs;
}

}  // namespace

structures::CnotCircuit GreedyGaussianElimination_faster(int n, BoolMatrix& m) {
  structures::CnotCircuit circuit(n);
  BitMatrix work = packed(n, m);
  circuit.gates = pair_elimination(work);
  work.unpack_into(m);
  return circuit;
}

std::vector<RowPair> get_pairs_lower(int n, const BoolMatrix& m, int col) {
  return match_column(packed(n, m), col);
}

std::vector<RowPair> get_pairs_upper(int n, const BoolMatrix& m, int k) {
  return mirrored_pairs(n, match_column(packed_mirrored(n, m), k));
}

std::vector<RowPair> recursive_get_pairs_lower(int n, const BoolMatrix& m, int col,
                                               std::vector<int>& rows) {
  return match_rows(packed(n, m), col, rows);
}

std::vector<RowPair> recursive_get_pairs_upper(int n, const BoolMatrix& m, int k,
                                               std::vector<int>& rows) {
  for (int& r : rows) r = n - 1 - r;
  const auto pairs = match_rows(packed_mirrored(n, m), k, rows);
  for (int& r : rows) r = n - 1 - r;
  return mirrored_pairs(n, pairs);
}

RowPair choose_best_pair_trig_lower(int n, const BoolMatrix& m, int start) {
  return choose_pair(packed(n, m), start);
}

RowPair choose_best_pair_trig_upper(int n, const BoolMatrix& m, int start) {
  const auto [a, b] = choose_pair(packed_mirrored(n, m), start);
  return a < 0 ? RowPair{a, b} : RowPair{n - 1 - a, n - 1 - b};
}

}  // namespace synthesis
