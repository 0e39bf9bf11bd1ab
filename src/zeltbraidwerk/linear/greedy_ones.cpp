#include "zeltbraidwerk/linear/greedy_ones.h"

#include <utility>

#include "zeltbraidwerk/linear/internal/greedy_doors.h"
#include "zeltbraidwerk/linear/internal/ones_position.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

namespace {

void store(const Savings& savings, Table<int>& R, Table<int>& C) {
  const int n = savings.side[0].size();
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      entry(R, i, j) = savings.side[true].at(i, j);
      entry(C, i, j) = savings.side[false].at(i, j);
    }
  }
}

}  // namespace

void create_cost_matrix_ones(int n, const BoolMatrix& A, Table<int>& R, Table<int>& C) {
  store(OnesPosition(BitMatrix::pack(A, n, n)).savings(), R, C);
}

void update_cost_matrix_ones(int n, int i, int j, bool row, const BoolMatrix& A, Table<int>& R,
                             Table<int>& C) {
  const LineAddition addition{i, j, row};
  Lines before(BitMatrix::pack(A, n, n));
  before.add(addition);
  OnesPosition position(before.side(true), load_savings(n, R, C));
  position.apply(addition);
  store(position.savings(), R, C);
}

int compute_available_operation_ones(int n, int width, int depth, const BoolMatrix& A,
                                     const Table<int>& R, const Table<int>& C,
                                     std::vector<ScoredOperation>& out) {
  const BitMatrix a = BitMatrix::pack(A, n, n);
  if (depth > 1) {
    return put_ahead(OnesPosition(a, load_savings(n, R, C)), {width, depth}, out);
  }
  return put_all(n, out, [&, ones = a.weight()](LineAddition o) {
    return ones - entry(o.row ? R : C, o.from, o.to);
  });
}

Operation compute_next_operation_ones(int n, int width, int depth, const BoolMatrix& A,
                                      const Table<int>& R, const Table<int>& C) {
  return next_operation(OnesPosition(BitMatrix::pack(A, n, n), load_savings(n, R, C)),
                        {width, depth});
}

structures::CnotCircuit greedy_synthesis_ones(int n, BoolMatrix A, std::vector<int>& perm,
                                              int width, int depth) {
  return run_greedy(n, A, perm, {.cost = GreedyCost::Ones, .beam = {width, depth}});
}

structures::CnotCircuit conversion(structures::CnotCircuit row_circuit,
                                   structures::CnotCircuit column_circuit,
                                   const std::vector<int>& perm) {
  return join(std::move(row_circuit), std::move(column_circuit), perm);
}

}  // namespace synthesis
