#include "zeltbraidwerk/routing/internal/route.h"

#include "zeltbraidwerk/foundations/weyl.h"
#include "zeltbraidwerk/routing/internal/cached_trees.h"
#include "zeltbraidwerk/routing/internal/device_trees.h"

namespace zelt::braidwerk::internal {

using structures::Gate;
using structures::OperatorTableau;

BlockList::BlockList(int block, const std::vector<synthesis::RotationSequence>& blocks, int qubits)
    : rotations(qubits) {
  for (auto b = static_cast<std::size_t>(block); b < blocks.size(); ++b) {
    for (const auto& [letters, angle] : blocks[b]) rotations.append(letters, angle);
    first.push_back(rotations.count());
  }
}

PauliFrame carried(const RotationRows& rotations, const OperatorTableau& tableau) {
  if (tableau == OperatorTableau(tableau.nbqbits)) return rotations.frame();
  PauliFrame frame(rotations.qubits, rotations.count());
  for (int r = 0; r < rotations.count(); ++r) {
    structures::WeylOperator axis(rotations.letters(r));
    axis.conjugate_with(tableau);
    const auto [negative, letters] = axis.to_pauli();
    frame.set_negative(r, negative);
    for (int q = 0; q < frame.qubits(); ++q) {
      const char letter = letters[static_cast<std::size_t>(q)];
      frame.set_letter(r, q, letter == 'X' ? 1 : letter == 'Y' ? 2 : letter == 'Z' ? 3 : 0);
    }
  }
  return frame;
}

namespace {

template <class Trees>
bool route_over(Trees trees, const std::vector<Gate>& circuit, const RoutingOptions& options,
                std::vector<Gate>& out, OperatorTableau& frame) {
  const NormalForm form =
      normal_form(circuit, frame, options.commuting_blocks, options.merge, options.linear_sums);
  FrameAxes axes(carried(form.rotations, frame));
  Waiting waiting(form.first);
  const bool finished = route_on_device(
      axes, waiting, trees, options.objective, options.depth, options.control,
      [&](const Gadget& gadget) {
        for (Gate& gate : gadget.gates()) {
          frame.apply_left(gate);
          out.push_back(std::move(gate));
        }
        if (gadget.root < 0) return;
        out.push_back(turn(gadget.root, form.rotations.angles[static_cast<std::size_t>(gadget.row)],
                           gadget.flip));
      });
  if (finished) frame.multiply_right(form.clifford);
  return finished;
}

}  // namespace

bool route(const std::vector<Gate>& circuit, structures::Graph& graph,
           const RoutingOptions& options, std::vector<Gate>& out, OperatorTableau& frame) {
  return options.keeps_trees ? route_over(CachedTrees(graph), circuit, options, out, frame)
                             : route_over(DeviceTrees(graph), circuit, options, out, frame);
}

}  // namespace zelt::braidwerk::internal
