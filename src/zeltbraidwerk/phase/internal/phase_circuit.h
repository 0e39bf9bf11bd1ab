#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/phase_polynomial.h"

namespace zelt::braidwerk::internal {

/// One gate of a phase circuit: CNOT(control, target), or the phase of a term on a target.
struct PhaseStep {
  int control;  ///< -1 for a phase
  int target;
  int term;  ///< -1 for a CNOT

  static PhaseStep cnot(int control, int target) { return {control, target, -1}; }
  static PhaseStep phase(int target, int term) { return {-1, target, term}; }
  bool is_cnot() const { return term < 0; }
};

/// The parity table of a polynomial on n qubits: entry (r, c) says that the parity of term c holds
/// wire r. Throws std::invalid_argument for a key of another length, and for the zero parity, which
/// is a global phase that no wire ever carries.
BitMatrix pack_parities(const PhasePolynomial& poly, int n);

/// The linear map on n wires of the steps' CNOTs.
BitMatrix linear_map(const std::vector<PhaseStep>& steps, int n);

/// The steps as gates; params[c] is the angle of term c.
void append_gates(const std::vector<PhaseStep>& steps,
                  const std::vector<const structures::Parameter*>& params,
                  std::vector<structures::Gate>& circuit);

inline std::vector<const structures::Parameter*> angles(const PhasePolynomial& poly) {
  std::vector<const structures::Parameter*> params;
  params.reserve(poly.size());
  for (const auto& term : poly) params.push_back(&term.second);
  return params;
}

}  // namespace zelt::braidwerk::internal
