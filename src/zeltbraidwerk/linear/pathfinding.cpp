#include "zeltbraidwerk/linear/pathfinding.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "zeltbraidwerk/linear/internal/greedy_doors.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

structures::CnotCircuit pathfinding_synthesis(int n, const BoolMatrix& A, std::vector<int>& perm,
                                              char* cost, bool with_inverse, int width, int depth,
                                              int restarts, bool escape) {
  GreedyOptions options{.beam = {width, depth}, .announce_escapes = true};
  const std::string_view name = cost;
  if (name == "log") {
    options.cost = GreedyCost::Log;
  } else if (name != "ones") {
    return {};
  } else if (escape) {
    options.cost = GreedyCost::OnesWithEscape;
  } else if (with_inverse) {
    options.cost = GreedyCost::OnesWithInverse;
  }

  structures::CnotCircuit best = run_greedy(n, A, perm, options);
  std::vector<int> run_perm(static_cast<std::size_t>(std::max(n, 0)));
  const Control control;
  for (int run = 1; run < restarts && !control.stop_requested(); ++run) {
    structures::CnotCircuit circuit = run_greedy(n, A, run_perm, options);
    if (circuit.gates.size() < best.gates.size()) {
      std::ranges::copy(run_perm, perm.begin());
      best = std::move(circuit);
    }
  }
  return best;
}

}  // namespace synthesis
