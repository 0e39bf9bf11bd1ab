#pragma once

#include <string>
#include <vector>

#include "support/oracles.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/table.h"
#include "zeltbraidwerk/phase/phase_polynomial.h"

/// \file
/// Phase polynomials to test on, and the check of a circuit for one.

namespace support {

/// polynomial({"011", "100"}): angles 1, 2, ... in the order given.
inline PhasePolynomial polynomial(const std::vector<std::string_view>& parities) {
  PhasePolynomial poly;
  double angle = 0;
  for (const BoolRow& parity : matrix(parities)) poly[parity] = angle += 1;
  return poly;
}

/// `terms` draws of a parity that is not zero; every third angle symbolic.
inline PhasePolynomial random_polynomial(int n, int terms, Rng& rng) {
  PhasePolynomial poly;
  for (int k = 0; k < terms; ++k) {
    BoolRow parity(at(n));
    for (int q = 0; q < n; ++q) parity[at(q)] = rng() & 1;
    parity[rng() % at(n)] = true;
    poly[parity] = k % 3 == 0 ? structures::Parameter("a" + std::to_string(k)) : 0.1 * k;
  }
  return poly;
}

/// Follows the parities through the circuit. Each term must come up once under its own angle, and
/// `table` must be what the wires hold in the end. Returns the first fault, or an empty text.
inline std::string fault(const PhasePolynomial& poly, const std::vector<structures::Gate>& circuit,
                         const structures::Table& table) {
  BoolMatrix wires = identity(table.n);
  PhasePolynomial left = poly;
  for (const structures::Gate& gate : circuit) {
    if (gate.name == "CNOT" && gate.qbits.size() == 2 && !gate.diag) {
      add_row(wires, gate.qbits[0], gate.qbits[1]);
      continue;
    }
    if (gate.name != "PH" || gate.qbits.size() != 1 || !gate.diag) return gate.to_string();
    const auto term = left.find(wires[at(gate.qbits[0])]);
    if (term == left.end()) return "no such term is left at " + gate.to_string();
    if (gate.params != std::vector{term->second}) return "wrong angle at " + gate.to_string();
    left.erase(term);
  }
  if (!left.empty()) return std::to_string(left.size()) + " terms unserved";
  if (table.to_bool_bool() != wires) return "the table is not the circuit's map";
  return "";
}

}  // namespace support
