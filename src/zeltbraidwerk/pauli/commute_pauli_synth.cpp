#include "zeltbraidwerk/pauli/commute_pauli_synth.h"

#include <random>

#include "zeltbraidwerk/foundations/internal/engine_draw.h"
#include "zeltbraidwerk/pauli/internal/commuting_sets.h"

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::OperatorTableau;

namespace {

int letters_of(const PauliRotationMap& rotations) {
  return static_cast<int>(rotations.begin()->first.size());
}

}  // namespace

std::vector<Gate> commute_pauli_synth(PauliRotationMap& rotations, int method) {
  if (rotations.empty()) return {};
  return synthesise_sets(pack_rotations(rotations, letters_of(rotations)), method,
                         device_draw<std::mt19937>());
}

std::vector<Gate> commute_pauli_synth_improved(PauliRotationMap& rotations,
                                               OperatorTableau& tableau, int method) {
  if (rotations.empty()) return {};
  const int qubits = letters_of(rotations);
  tableau = OperatorTableau(qubits);
  std::vector<Gate> circuit =
      synthesise_open_sets(pack_rotations(rotations, qubits), method, device_draw<std::mt19937>());
  for (const Gate& gate : circuit) tableau.apply_left(gate);
  return circuit;
}

void extend_rev(std::vector<Gate>& target, const std::vector<Gate>& source) {
  append_reversed(target, source);
}
