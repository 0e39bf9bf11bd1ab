#include "zeltbraidwerk/pauli/internal/commuting_sets.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/pauli/internal/colouring.h"
#include "zeltbraidwerk/pauli/internal/graph_form.h"
#include "zeltbraidwerk/phase/internal/gray_synth.h"

using structures::Gate;
using structures::Parameter;

namespace zelt::braidwerk::internal {
namespace {

/// The rows of a diagonal frame that are terms of a phase polynomial: all but identity strings. The
/// order of the terms makes no difference to gray_synth.
std::vector<int> terms_of(const PauliFrame& diagonal) {
  std::vector<int> terms;
  for (int r = 0; r < diagonal.rows(); ++r) {
    if (diagonal.weight(r) != 0) terms.push_back(r);
  }
  return terms;
}

/// One group of rotations: a basis change, and what follows it.
struct Group {
  std::vector<Gate> basis_change;
  std::vector<PhaseStep> steps;
  std::vector<Gate> phases;  ///< the steps as gates

  Group(const Rotations& rotations, const std::vector<int>& rows, int method, const Draw& draw) {
    stop_point();
    PauliFrame frame = rotations.frame.select(rows);
    int failures = 0;
    basis_change = change_basis(frame, method, failures, draw);

    const std::vector<int> terms = terms_of(frame);
    std::vector<Parameter> angles;
    std::vector<const Parameter*> listed;
    for (const int term : terms) {
      const int row = rows[static_cast<std::size_t>(term)];
      const Parameter& angle = rotations.params[static_cast<std::size_t>(row)];
      angles.push_back(frame.is_negative(term) ? angle.flip_sign() : angle);
    }
    for (const Parameter& angle : angles) listed.push_back(&angle);
    steps = gray_synth(frame.select(terms).z_planes());
    append_gates(steps, listed, phases);
  }
};

void append(std::vector<Gate>& circuit, const std::vector<Gate>& gates) {
  circuit.insert(circuit.end(), gates.begin(), gates.end());
}

void append_inverse(std::vector<Gate>& circuit, const std::vector<Gate>& gates) {
  const auto first = static_cast<std::ptrdiff_t>(circuit.size());
  append_reversed(circuit, gates);
  std::for_each(circuit.begin() + first, circuit.end(), [](Gate& gate) {
    for (Parameter& angle : gate.params) angle = angle.flip_sign();
  });
}

}  // namespace

std::vector<Gate> synthesise_sets(const Rotations& rotations, int method, const Draw& draw) {
  std::vector<Gate> circuit;
  for (const std::vector<int>& rows : commuting_groups(rotations.frame)) {
    const Group group(rotations, rows, method, draw);
    append(circuit, group.basis_change);
    append(circuit, group.phases);
    const BitMatrix map = linear_map(group.steps, rotations.frame.qubits());
    append(circuit, optimized_pmh(map).to_circuit());
    append_inverse(circuit, group.basis_change);
  }
  return circuit;
}

std::vector<Gate> synthesise_open_sets(Rotations rotations, int method, const Draw& draw) {
  std::vector<Gate> circuit;
  for (const std::vector<int>& rows : commuting_groups(rotations.frame)) {
    const Group group(rotations, rows, method, draw);
    for (const auto* gates : {&group.basis_change, &group.phases}) {
      // The groups to come stand after these gates.
      for (const Gate& gate : *gates) rotations.frame.apply(gate);
      append(circuit, *gates);
    }
  }
  return circuit;
}

void append_reversed(std::vector<Gate>& target, const std::vector<Gate>& source) {
  for (std::size_t k = source.size(); k-- > 0;) target.push_back(source[k]);
}

}  // namespace zelt::braidwerk::internal
