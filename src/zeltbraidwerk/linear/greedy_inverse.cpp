#include "zeltbraidwerk/linear/greedy_inverse.h"

#include <algorithm>
#include <limits>

#include "zeltbraidwerk/linear/internal/greedy_doors.h"
#include "zeltbraidwerk/linear/internal/inverse_position.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

namespace {

/// What the addition saves in the matrix and in its inverse.
int joint_saving(LineAddition o, const Table<int>& R, const Table<int>& C, const Table<int>& Ri,
                 const Table<int>& Ci) {
  return entry(o.row ? R : C, o.from, o.to) + entry(o.row ? Ci : Ri, o.to, o.from);
}

}  // namespace

int compute_available_operation_ones_with_inv(int n, int width, int depth, const BoolMatrix& A,
                                              const BoolMatrix& B, const Table<int>& R,
                                              const Table<int>& C, const Table<int>& Ri,
                                              const Table<int>& Ci,
                                              std::vector<ScoredOperation>& out) {
  const BitMatrix a = BitMatrix::pack(A, n, n);
  const BitMatrix b = BitMatrix::pack(B, n, n);
  if (depth > 1) {
    int discount = n < 2 ? 0 : std::numeric_limits<int>::min();
    each_addition(n, [&](LineAddition o) {
      discount = std::max(discount, entry(R, o.from, o.to) + entry(C, o.to, o.from));
    });
    return put_ahead(InversePosition(a, b, discount), {width, depth}, out);
  }
  return put_all(n, out, [&, ones = a.weight() + b.weight()](LineAddition o) {
    return ones - joint_saving(o, R, C, Ri, Ci);
  });
}

Operation compute_next_operation_ones_with_inv(int n, int width, int depth, const BoolMatrix& A,
                                               const BoolMatrix& B, const Table<int>& R,
                                               const Table<int>& C, const Table<int>& Ri,
                                               const Table<int>& Ci) {
  const BitMatrix a = BitMatrix::pack(A, n, n);
  const BitMatrix b = BitMatrix::pack(B, n, n);
  // With lookahead the costs rest on the matrices alone.
  if (depth > 1) return next_operation(InversePosition(a, b), {width, depth});
  Savings savings(n);
  each_addition(n, [&](LineAddition o) {
    savings.side[o.row].set(o.from, o.to, joint_saving(o, R, C, Ri, Ci));
  });
  for (SavingTable& table : savings.side) table.find_largest();
  return next_operation(InversePosition(a, b, std::move(savings)), {width, depth});
}

structures::CnotCircuit greedy_synthesis_ones_with_inv(int n, BoolMatrix A, std::vector<int>& perm,
                                                       int width, int depth) {
  return run_greedy(n, A, perm, {.cost = GreedyCost::OnesWithInverse, .beam = {width, depth}});
}

}  // namespace synthesis
