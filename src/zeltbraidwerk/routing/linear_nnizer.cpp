#include "zeltbraidwerk/routing/linear_nnizer.h"

#include <iterator>

#include "zeltbraidwerk/routing/internal/cached_trees.h"
#include "zeltbraidwerk/routing/internal/route.h"

namespace synthesis {
namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;

int choose(FanInCost objective, int block, const std::vector<RotationSequence>& blocks,
           const OperatorTableau& frame, Graph& graph, int depth, std::vector<Gate>& gates,
           int& qubit, int& index, bool& flip) {
  if (block < 0 || block >= static_cast<int>(blocks.size())) return 0;
  const BlockList list(block, blocks, frame.nbqbits);
  Waiting waiting(list.first);
  if (waiting.is_empty(0)) return 0;
  CachedTrees trees(graph);
  const Control control;
  Gadget gadget;
  GadgetSearch<FrameAxes, CachedTrees> search(waiting, trees, objective, control);
  const int cost = search.best(0, FrameAxes(carried(list.rotations, frame)), depth, &gadget);
  std::ranges::move(gadget.gates(), std::back_inserter(gates));
  if (gadget.root >= 0) qubit = gadget.root;
  index = gadget.row;
  flip = gadget.flip;
  return cost;
}

}  // namespace

void clifford_nnize(const std::vector<Gate>& circuit, Graph& graph, int depth,
                    bool commuting_blocks, bool merge, std::vector<Gate>& out,
                    OperatorTableau& frame, int sketch_mode) {
  graph.sketch_mode = sketch_mode;
  route(circuit, graph, {depth, commuting_blocks, merge, FanInCost::cnots, true, {}}, out, frame);
}

int cost_clifford_order(int block, std::vector<RotationSequence>& blocks, OperatorTableau frame,
                        Graph& graph, int depth, std::vector<Gate>& gates, int& qubit, int& index,
                        bool& flip) {
  return choose(FanInCost::cnots, block, blocks, frame, graph, depth, gates, qubit, index, flip);
}

void clifford_nnize_depth(const std::vector<Gate>& circuit, Graph& graph, int depth,
                          bool commuting_blocks, bool merge, std::vector<Gate>& out,
                          OperatorTableau& frame, int sketch_mode) {
  graph.sketch_mode = sketch_mode;
  route(circuit, graph, {depth, commuting_blocks, merge, FanInCost::told_depth, true, {}}, out,
        frame);
}

int cost_clifford_order_depth(int block, std::vector<RotationSequence>& blocks,
                              OperatorTableau frame, Graph& graph, int depth,
                              std::vector<Gate>& gates, int& qubit, int& index, bool& flip) {
  return choose(FanInCost::told_depth, block, blocks, frame, graph, depth, gates, qubit, index,
                flip);
}

}  // namespace synthesis
