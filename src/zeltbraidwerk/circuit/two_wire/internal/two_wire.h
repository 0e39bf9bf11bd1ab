#pragma once

#include <Eigen/Core>
#include <optional>
#include <vector>

#include "zeltbraidwerk/circuit/two_wire/internal/place_gate.h"
#include "zeltbraidwerk/circuit/two_wire/internal/weyl_form.h"

namespace zelt::braidwerk::internal {

/// Gates on two places in time order. exp(i phase) times the product of their matrices is the
/// operator asked for.
struct TwoWireCircuit {
  std::vector<PlaceGate> gates;
  double phase = 0;
};

/// How far a circuit may be from its operator: the Frobenius norm of the difference.
inline constexpr double most_error = 1e-10;

/// How many CNOTs a unitary matrix needs, 0 to 3.
int cnots_needed(const Eigen::Matrix4cd& unitary);

/// A circuit of cnots_needed CNOTs, with at most 6, 10, 14 or 15 rotations for 0, 1, 2 or 3 of
/// them, and Clifford gates on one wire, if that is better than a known one. Each circuit is
/// multiplied out; nothing comes back where it is not right to most_error, as for matrices that are
/// not unitary. Three CNOTs: F. Vatan, C. Williams, Physical Review A 69 (2004) 032315.
std::optional<TwoWireCircuit> two_wire_circuit(const Eigen::Matrix4cd& unitary,
                                               const GateCounts& known = {4, 0, 0});

/// The phase of `to` against `from`, two matrices that differ by their phase alone, or nothing
/// where they differ otherwise by more than `error` in the Frobenius norm.
std::optional<double> relative_phase(const Eigen::Matrix4cd& from, const Eigen::Matrix4cd& to,
                                     double error);

}  // namespace zelt::braidwerk::internal
