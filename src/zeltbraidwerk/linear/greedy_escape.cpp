#include "zeltbraidwerk/linear/greedy_escape.h"

#include "zeltbraidwerk/linear/internal/greedy_doors.h"
#include "zeltbraidwerk/linear/internal/ones_position.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

Operation compute_next_operation_ones_with_escape(int n, int width, int depth, const BoolMatrix& A,
                                                  const Table<int>& R, const Table<int>& C) {
  return next_operation(OnesPosition(BitMatrix::pack(A, n, n), load_savings(n, R, C)),
                        {width, depth}, true);
}

structures::CnotCircuit greedy_synthesis_ones_with_escape(int n, BoolMatrix A,
                                                          std::vector<int>& perm, int width,
                                                          int depth, int level) {
  return run_greedy(n, A, perm,
                    {.cost = GreedyCost::OnesWithEscape,
                     .beam = {width, depth},
                     .level = level,
                     .announce_escapes = true});
}

}  // namespace synthesis
