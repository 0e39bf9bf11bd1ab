#include "zeltbraidwerk/linear/greedy_log.h"

#include <cmath>
#include <utility>

#include "zeltbraidwerk/linear/internal/greedy_doors.h"
#include "zeltbraidwerk/linear/internal/log_position.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

void create_cost_matrix_log(int n, BoolMatrix& A, Table<double>& R, Table<double>& C) {
  if (n < 1) return;
  LogSavings savings(n);
  savings.find(Lines(BitMatrix::pack(A, n, n)), logarithms(n));
  for (int i = 0; i < n; ++i) entry(R, i, i) = entry(C, i, i) = -n * std::log(n);
  each_addition(n, [&](LineAddition o) { entry(o.row ? R : C, o.from, o.to) = savings.at(o); });
}

void update_cost_matrix_log(int n, int, int, bool, BoolMatrix& A, Table<double>& R,
                            Table<double>& C) {
  create_cost_matrix_log(n, A, R, C);
}

int compute_available_operation_log(int n, int width, int depth, const BoolMatrix& A,
                                    const Table<double>& R, const Table<double>& C,
                                    std::vector<LogScoredOperation>& out) {
  const BitMatrix a = BitMatrix::pack(A, n, n);
  if (depth > 1) return put_ahead(LogPosition(a), {width, depth}, out);
  return put_all(n, out, [&, base = potential(Lines(a), logarithms(n))](LineAddition o) {
    return base - entry(o.row ? R : C, o.from, o.to);
  });
}

Operation compute_next_operation_log(int n, int width, int depth, const BoolMatrix& A,
                                     const Table<double>& R, const Table<double>& C) {
  LogSavings savings(n);
  each_addition(n, [&](LineAddition o) { savings.set(o, entry(o.row ? R : C, o.from, o.to)); });
  return next_operation(LogPosition(BitMatrix::pack(A, n, n), std::move(savings)), {width, depth});
}

structures::CnotCircuit greedy_synthesis_log(int n, BoolMatrix A, std::vector<int>& perm, int width,
                                             int depth) {
  return run_greedy(n, A, perm, {.cost = GreedyCost::Log, .beam = {width, depth}});
}

}  // namespace synthesis
