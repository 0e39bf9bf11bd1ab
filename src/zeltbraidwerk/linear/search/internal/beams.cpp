#include "zeltbraidwerk/linear/search/internal/beams.h"

#include "zeltbraidwerk/linear/search/internal/column_reduction.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

template <class Problem>
GateList reduced(Problem problem, const BitMatrix& m, const BeamOptions& options, Facing facing,
                 Rng& rng, Meter& meter) {
  BeamSearch<Problem> search(problem, options, rng, meter);
  const auto found = search.run(problem.start(face(m, facing)));
  if (found.empty()) return {};
  FreeCircuit circuit = free_circuit(problem.circuit(found[0].state, found[0].moves));
  circuit.face_back(facing);
  return gate_list(circuit);
}

}  // namespace

GateList reduce(const BitMatrix& m, const ReductionCost& cost, int width, Facing facing, Rng& rng,
                Meter& meter) {
  const BeamOptions options{.width = width, .noise = width > 1 ? cnot_tuning.tie_noise : 0};
  return reduced(Reduction(m.rows(), cost), m, options, facing, rng, meter);
}

GateList reduce_by_columns(const BitMatrix& m, int width, Facing facing, Rng& rng, Meter& meter) {
  const BeamOptions options{.width = width, .patience = cnot_tuning.patience + m.rows()};
  return reduced(ColumnReduction(m.rows()), m, options, facing, rng, meter);
}

}  // namespace zelt::braidwerk::internal
