#pragma once

#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/phase/internal/columns.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"

namespace zelt::braidwerk::internal {

/// The two mutually recursive steps of gray_synth_on_graph over one parity table. The steps leave
/// in `columns` what the exported step functions leave in their sets. Calls nest at most twice as
/// deep as there are rows.
class GraphWalk {
 public:
  GraphWalk(const structures::Graph& graph, BitMatrix parities);

  void reduce(Columns& columns);
  void base_step(Columns& columns, const VertexSet& rows);
  void ones_step(Columns& columns, const VertexSet& rows, int target);

  const BitMatrix& parities() const { return parities_; }
  const std::vector<PhaseStep>& steps() const { return steps_; }

 private:
  void place_cnot(int control, int target);
  int best_row(const Columns& columns, const VertexSet& rows) const;
  std::pair<int, int> best_neighbour(const Columns& columns, const VertexSet& rows,
                                     int target) const;

  BitGraph graph_;
  VertexSet vertices_;
  BitMatrix parities_;
  std::vector<PhaseStep> steps_;
};

}  // namespace zelt::braidwerk::internal
