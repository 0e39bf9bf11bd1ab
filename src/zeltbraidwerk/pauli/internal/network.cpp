#include "zeltbraidwerk/pauli/internal/network.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/internal/colouring.h"
#include "zeltbraidwerk/pauli/internal/diagonaliser.h"
#include "zeltbraidwerk/phase/gray_synth_on_graph.h"

using structures::Gate;

namespace zelt::braidwerk::internal {
namespace {

Rotations select(const Rotations& rotations, const std::vector<int>& rows) {
  Rotations chosen{rotations.frame.select(rows), {}};
  for (const int r : rows) chosen.params.push_back(rotations.params[static_cast<std::size_t>(r)]);
  return chosen;
}

void append(std::vector<Gate>& circuit, std::vector<Gate> gates) {
  circuit.insert(circuit.end(), std::move_iterator(gates.begin()), std::move_iterator(gates.end()));
}

PhasePolynomial phases_of(const Rotations& diagonal) {
  PhasePolynomial terms;
  for (int r = 0; r < diagonal.frame.rows(); ++r) {
    if (diagonal.frame.weight(r) == 0) continue;
    BoolRow parity;
    for (int q = 0; q < diagonal.frame.qubits(); ++q) {
      parity.push_back(diagonal.frame.letter(r, q) != 0);
    }
    const structures::Parameter& angle = diagonal.params[static_cast<std::size_t>(r)];
    terms[parity] = diagonal.frame.is_negative(r) ? angle.flip_sign() : angle;
  }
  return terms;
}

}  // namespace

std::vector<Gate> synthesise_ladders(const Rotations& rotations) {
  std::vector<Gate> circuit;
  for (int r = 0; r < rotations.frame.rows(); ++r) {
    PauliFrame row = rotations.frame.select(std::vector{r});
    stop_point();
    std::vector<Gate> basis;
    int last = -1;
    for (int q = 0; q < row.qubits(); ++q) {
      if (row.letter(0, q) == 0) continue;
      bring_to_z(row, q, row.letter(0, q), basis);
      if (last >= 0) apply_cnot(row, last, q, basis);
      last = q;
    }
    if (last < 0) continue;
    append(circuit, basis);
    circuit.push_back(
        rotation_gate(row, 0, last, rotations.params[static_cast<std::size_t>(r)], "RZ"));
    append(circuit, inverted(basis));
  }
  return circuit;
}

std::vector<Gate> synthesise_open_sets_on_graph(Rotations rotations, structures::Graph& graph) {
  std::vector<Gate> circuit;
  for (const std::vector<int>& rows : commuting_groups(rotations.frame)) {
    Rotations group = select(rotations, rows);
    stop_point();
    std::vector<Gate> gates = diagonalise(group.frame, &graph);
    structures::Table map(graph.n);
    append(gates, gray_synth_on_graph(phases_of(group), graph, map));
    for (const Gate& gate : gates) rotations.frame.apply(gate);
    append(circuit, std::move(gates));
  }
  return circuit;
}

std::vector<std::vector<int>> layers_in_order(const PauliFrame& frame) {
  std::vector<std::vector<int>> layers;
  std::vector<std::size_t> layer_of;
  std::vector<Word> before(static_cast<std::size_t>(frame.words()));
  for (int r = 0; r < frame.rows(); ++r) {
    frame.anticommuting_rows(frame, r, before.data());
    stop_point();
    std::size_t layer = 0;
    for_each_bit(before.data(), words_for(r), [&](int other) {
      if (other < r) layer = std::max(layer, layer_of[static_cast<std::size_t>(other)] + 1);
    });
    layer_of.push_back(layer);
    if (layer == layers.size()) layers.emplace_back();
    layers[layer].push_back(r);
  }
  return layers;
}

std::vector<Gate> synthesise_in_order(Rotations rotations, const Synthesis& synthesis) {
  std::vector<Gate> circuit;
  for (const std::vector<int>& rows : layers_in_order(rotations.frame)) {
    std::vector<Gate> gates = synthesis(select(rotations, rows));
    for (const Gate& gate : gates) rotations.frame.apply(gate);
    append(circuit, std::move(gates));
  }
  return circuit;
}

}  // namespace zelt::braidwerk::internal
