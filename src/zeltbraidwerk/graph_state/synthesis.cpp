#include "zeltbraidwerk/graph_state/synthesis.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/engine_draw.h"
#include "zeltbraidwerk/graph_state/internal/action.h"
#include "zeltbraidwerk/graph_state/internal/candidates.h"
#include "zeltbraidwerk/graph_state/internal/decoder.h"
#include "zeltbraidwerk/graph_state/internal/synthesis.h"

namespace zelt::braidwerk::internal {
namespace {

/// The circuit solves the first `last` qubits, and is to solve one more.
void extend(TripleCircuit& circuit, const BitMatrix& graph, int last, int tries, const Draw& draw,
            const Control& control) {
  const Candidates found =
      find_candidates(circuit, graph.block(0, 0, last, last), graph.block(last, 0, 1, last).row(0));
  const std::vector<int> chosen = decode(found.problem, tries, draw, control);
  insert_groups(circuit, chosen, found.positions, found.qubits, found.codes, last);

  BitMatrix rest = graph.block(0, 0, last + 1, last + 1);
  act(rest, circuit);
  if (rest.get(last, last)) circuit.emplace_back(code_s, last, 0);
}

}  // namespace

void synthesise_graph_state(const BitMatrix& graph, TripleCircuit& circuit, int tries,
                            const Draw& draw, const Control& control) {
  if (graph.rows() == 0) return;
  if (graph.get(0, 0)) circuit.emplace_back(code_s, 0, 0);
  for (int last = 1; last < graph.rows(); ++last) {
    stop_point();
    extend(circuit, graph, last, tries, draw, control);
  }
}

}  // namespace zelt::braidwerk::internal

using namespace zelt::braidwerk::internal;

void graph_state_synthesis(BoolMatrix graph, TripleCircuit& circuit, int n, int tries) {
  if (graph.empty()) return;
  const int size = std::max(n, 1);
  synthesise_graph_state(BitMatrix::pack(graph, size, size), circuit, tries,
                         device_draw<std::mt19937>(), Control{});
}
