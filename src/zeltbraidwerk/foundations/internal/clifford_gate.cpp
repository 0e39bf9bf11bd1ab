#include "zeltbraidwerk/foundations/internal/clifford_gate.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/turns.h"

namespace zelt::braidwerk::internal {

using Kind = CliffordGate::Kind;

CliffordGate CliffordGate::inverse() const {
  switch (kind) {
    case Kind::s:
      return {Kind::s_dagger, a, b};
    case Kind::s_dagger:
      return {Kind::s, a, b};
    case Kind::rx_plus:
      return {Kind::rx_minus, a, b};
    case Kind::rx_minus:
      return {Kind::rx_plus, a, b};
    default:
      return *this;
  }
}

std::vector<CliffordGate> inverted(std::vector<CliffordGate> gates) {
  std::ranges::reverse(gates);
  for (CliffordGate& gate : gates) gate = gate.inverse();
  return gates;
}

structures::Gate to_gate(const CliffordGate& gate) {
  using structures::Gate;
  const int q = gate.a;
  switch (gate.kind) {
    case Kind::cnot:
      return Gate::CNOT(q, gate.b);
    case Kind::cz:
      return Gate::CZ(q, gate.b);
    case Kind::h:
      return Gate::H(q);
    case Kind::s:
      return Gate::S(q);
    case Kind::s_dagger:
      return Gate("RZ", {q}, {structures::Parameter(-quarter_turn)}, true);
    case Kind::rx_plus:
      return Gate::RXP(q);
    case Kind::rx_minus:
      return Gate("RX", {q}, {structures::Parameter(-quarter_turn)}, false);
    case Kind::x:
      return Gate("X", {q});
    case Kind::y:
      return Gate("Y", {q});
    default:
      return Gate("Z", {q});
  }
}

std::vector<structures::Gate> to_gates(const std::vector<CliffordGate>& gates) {
  std::vector<structures::Gate> result;
  result.reserve(gates.size());
  for (const CliffordGate& gate : gates) result.push_back(to_gate(gate));
  return result;
}

}  // namespace zelt::braidwerk::internal
