#include "zeltbraidwerk/linear/greedy_log.h"

#include <cmath>
#include <vector>

#include "zeltbraidwerk/linear/internal/greedy_doors.h"
#include "zeltbraidwerk/linear/internal/log_position.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

void create_cost_matrix_log(int n, BoolMatrix& A, Table<double>& R, Table<double>& C) {
  const LogPosition position(BitMatrix::pack(A, n, n));
  for (int i = 0; i < n; ++i) entry(R, i, i) = entry(C, i, i) = -n * std::log(n);
  each_addition(n, [&, before = position.potential()](LineAddition o) {
    entry(o.row ? R : C, o.from, o.to) = position.saving(o, before);
  });
}

void update_cost_matrix_log(int n, int, int, bool, BoolMatrix& A, Table<double>& R,
                            Table<double>& C) {
  create_cost_matrix_log(n, A, R, C);
}

int compute_available_operation_log(int n, int width, int depth, const BoolMatrix& A,
                                    const Table<double>& R, const Table<double>& C,
                                    std::vector<LogScoredOperation>& out) {
  const LogPosition position(BitMatrix::pack(A, n, n));
  if (depth > 1) return put_ahead(position, {width, depth}, out);
  return put_all(n, out, [&, base = position.potential()](LineAddition o) {
    return base - entry(o.row ? R : C, o.from, o.to);
  });
}

Operation compute_next_operation_log(int n, int width, int depth, const BoolMatrix& A,
                                     const Table<double>& R, const Table<double>& C) {
  const LogPosition position(BitMatrix::pack(A, n, n));
  if (depth > 1) return next_operation(position, {width, depth});
  std::vector<LogCandidate> candidates;
  each_addition(n, [&, base = position.potential()](LineAddition o) {
    candidates.push_back({base - entry(o.row ? R : C, o.from, o.to), o});
  });
  return to_operation(draw_lowest(candidates, shared_draw));
}

structures::CnotCircuit greedy_synthesis_log(int n, BoolMatrix A, std::vector<int>& perm, int width,
                                             int depth) {
  return run_greedy(n, A, perm, {.cost = GreedyCost::Log, .beam = {width, depth}});
}

}  // namespace synthesis
