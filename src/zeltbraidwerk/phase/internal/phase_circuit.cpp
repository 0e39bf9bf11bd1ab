#include "zeltbraidwerk/phase/internal/phase_circuit.h"

#include <stdexcept>

namespace zelt::braidwerk::internal {

BitMatrix pack_parities(const PhasePolynomial& poly, int n) {
  BitMatrix keys(static_cast<int>(poly.size()), n);
  int term = 0;
  for (const auto& [key, angle] : poly) {
    if (key.size() != static_cast<std::size_t>(n)) {
      throw std::invalid_argument("Parities must be as long as there are qubits");
    }
    pack_row(key, 0, n, keys.row(term));
    if (keys.row_weight(term) == 0) {
      throw std::invalid_argument(
          "The zero parity is a global phase and has no place in a circuit");
    }
    ++term;
  }
  return keys.transposed();
}

BitMatrix linear_map(const std::vector<PhaseStep>& steps, int n) {
  BitMatrix map = BitMatrix::identity(n);
  for (const PhaseStep& step : steps) {
    if (step.is_cnot()) map.add_row(step.control, step.target);
  }
  return map;
}

void append_gates(const std::vector<PhaseStep>& steps,
                  const std::vector<const structures::Parameter*>& params,
                  std::vector<structures::Gate>& circuit) {
  circuit.reserve(circuit.size() + steps.size());
  for (const PhaseStep& step : steps) {
    structures::Gate& gate = circuit.emplace_back();
    if (step.is_cnot()) {
      gate.name = "CNOT";
      gate.qbits = {step.control, step.target};
    } else {
      gate.name = "PH";
      gate.qbits.assign(1, step.target);
      gate.params.assign(1, *params[static_cast<std::size_t>(step.term)]);
      gate.diag = true;
    }
  }
}

}  // namespace zelt::braidwerk::internal
