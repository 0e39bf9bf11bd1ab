#pragma once

#include <vector>

#include "zeltbraidwerk/routing/internal/nearest_neighbour.h"
#include "zeltbraidwerk/routing/internal/rotation_rows.h"
#include "zeltbraidwerk/routing/metrics.h"

namespace zelt::braidwerk::internal {

struct RoutingOptions {
  int depth = 0;
  bool commuting_blocks = true;
  bool merge = true;
  FanInCost objective = FanInCost::cnots;  ///< on a device
  bool keeps_trees = false;                ///< in the graph's cache: each tree that is asked for
  Control control;                         ///< deadline and stop, looked at in every search
  bool linear_sums = false;                ///< of angles, as RotationRows has them
};

/// What synthesis::clifford_nnize and clifford_nnize_depth do, by the graph's own sketch_mode.
/// Unless `keeps_trees`, the graph's cache is neither read nor written, which is faster, and a
/// sketched tree with a cycle goes unnoticed where no cheapest plan can lie. False when the control
/// said stop: `out` then ends after some rotation, and `frame` is its gates'.
bool route(const std::vector<structures::Gate>& circuit, structures::Graph& graph,
           const RoutingOptions& options, std::vector<structures::Gate>& out,
           structures::OperatorTableau& frame);

/// What synthesis::clifford_nnize_ion and clifford_nnize_ion_shelving do. False as above.
bool route_ions(const std::vector<structures::Gate>& circuit, structures::DefaultMetric metric,
                const RoutingOptions& options, std::vector<structures::Gate>& out,
                structures::OperatorTableau& frame);
bool route_ions(const std::vector<structures::Gate>& circuit, structures::ShelveMetric metric,
                const RoutingOptions& options, std::vector<structures::Gate>& out,
                structures::OperatorTableau& frame);

/// Rotations as the public searches get them: the rows of all blocks from `block` on.
struct BlockList {
  RotationRows rotations;
  std::vector<int> first{0};

  BlockList(int block, const std::vector<synthesis::RotationSequence>& blocks, int qubits);
};

/// The rotations' strings carried through the operator of a tableau.
PauliFrame carried(const RotationRows& rotations, const structures::OperatorTableau& tableau);

/// The rotation about Z that a gadget ends with.
inline structures::Gate turn(int root, const structures::Parameter& angle, bool flip) {
  return {"RZ", {root}, {flip ? angle.flip_sign() : angle}, true};
}

}  // namespace zelt::braidwerk::internal
