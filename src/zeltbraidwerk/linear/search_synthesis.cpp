#include "zeltbraidwerk/linear/search_synthesis.h"

#include <algorithm>
#include <chrono>

#include "zeltbraidwerk/linear/search/internal/cnot_search.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

structures::CnotCircuit search_synthesis(int n, const BoolMatrix& A, std::vector<int>& perm,
                                         bool in_place, const SearchEffort& effort) {
  Effort limits;
  limits.steps = effort.steps;
  if (effort.seconds < 1e9) {
    limits.control.deadline =
        Control::Clock::now() + std::chrono::duration_cast<Control::Clock::duration>(
                                    std::chrono::duration<double>(effort.seconds));
  }
  const CnotSearchOptions options{.exact = in_place, .seed = effort.seed, .stream = effort.stream};
  FreeCircuit found = search_cnot(BitMatrix::pack(A, n, n), options, limits);
  std::ranges::copy(found.perm, perm.begin());
  return std::move(found.circuit);
}

}  // namespace synthesis
