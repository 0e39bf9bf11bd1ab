#include "zeltbraidwerk/linear/search_synthesis.h"

#include <algorithm>

#include "zeltbraidwerk/linear/search/internal/cnot_search.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

structures::CnotCircuit search_synthesis(int n, const BoolMatrix& A, std::vector<int>& perm,
                                         bool in_place, const SearchEffort& effort) {
  const Task task{.outputs = in_place ? Outputs::in_place : Outputs::anywhere,
                  .seed = effort.seed,
                  .stream = effort.stream};
  FreeCircuit found = search_cnot(BitMatrix::pack(A, n, n), task, limits_of(effort));
  std::ranges::copy(found.perm, perm.begin());
  return std::move(found.circuit);
}

}  // namespace synthesis
