#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace synthesis {

/// Outputs are in place or anywhere. Steps are windows of three qubits, of some microseconds;
/// not given, with no budget: default_optimize_steps. With one run, `jobs` threads share the
/// pieces of a circuit of more than 4,000 gates; the circuit is the same for any number of them.
///
/// Windows on two and three qubits are replaced by numbers where a rotation is by no multiple of
/// pi/4: any operator of two qubits takes at most three CNOTs, of three at most 19. That may change
/// all angles of the circuit.
///
/// By depth, a search by count with as many steps comes first (or half of the budget), and the
/// result is never deeper than what that one found.
struct OptimizeOptions : SynthesisOptions {
  bool exact = false;           ///< every angle stays a sum of given ones
  bool keep_rotations = false;  ///< windows replaced by numbers never have more rotations
  bool keep_depth = false;      ///< never more layers than given; not for one that is made anew
  /// The gates need not be on edges of the device: the circuit is made anew on these.
  bool route = false;
};

/// Gates on one to three qubits that were replaced, or moved. Gates have numbers: those of the
/// stage before from 0 on, then new ones as they come up.
struct OptimizeStep {
  std::array<int, 3> qubits{-1, -1, -1};  ///< -1 after the last one
  bool moves = false;  ///< the last of `before` comes to stand after the others, which it may pass
  std::vector<std::size_t> before;      ///< they stand together, in an order of time
  std::vector<structures::Gate> after;  ///< what replaces them
};

/// A circuit on the way from the given one. Without steps, it is the same by exact rewriting.
struct OptimizeStage {
  std::vector<structures::Gate> gates;  ///< the circuit
  std::vector<int> permutation;         ///< output q of the given circuit is on wire permutation[q]
  std::vector<OptimizeStep> steps;      ///< from the stage before to this one
  double phase = 0;  ///< with steps: exp(i phase) times this operator is that of the one before
};

/// How large a circuit is.
struct CircuitCounts {
  int two_qubit = 0;  ///< gates on two qubits
  int depth = 0;      ///< layers of these
  int one_qubit = 0;  ///< other gates
  int rotations = 0;  ///< those that are no Clifford gates
  int t = 0;          ///< rotations by an odd multiple of pi/4
};

/// A circuit of the front, as in OptimizeResult.
struct OptimizedCircuit {
  CircuitCounts after;                ///< its size
  double rounding = 0;                ///< as of the result
  std::vector<OptimizeStage> stages;  ///< the last one is the circuit
};

/// A circuit of optimize_circuit, its size, and how it came about.
struct OptimizeResult : SynthesisResult {
  /// "CNOT", "H", "S", "D-S", "X", "Y", "Z" and rotations; "CSIGN" where it was given.
  std::vector<structures::Gate> gates;
  CircuitCounts before;  ///< the size of the given circuit
  CircuitCounts after;   ///< and of the result
  /// The farthest that an angle was from the multiple of pi/2 that it was taken for: at most 1e-9.
  double rounding = 0;
  /// The circuits on the way; the last one is the result.
  std::vector<OptimizeStage> stages;
  /// For Objective::depth: circuits from few layers to few gates on two qubits, none both as
  /// shallow and as short as another. The first has as many of both as the result.
  std::vector<OptimizedCircuit> front;
};

/// Steps of a search without steps and budget, for a circuit of so many gates: 200,000, and 30 for
/// each.
ZELTBRAIDWERK_EXPORT std::uint64_t default_optimize_steps(std::size_t gates);

/// A circuit of the same operator, up to a global phase, that is never larger than the given one:
/// neither in gates on two qubits (by depth: in their layers) nor, but for windows that are
/// replaced by numbers, in rotations. At most 16,384 qubits; above that it throws TooLargeError.
///
/// Rotations about the same Pauli string are merged wherever what stands between commutes with
/// them, and become Clifford gates where their angles add up to it. Then gates are searched for
/// that serve the same rotations and leave the same Clifford operator, and other gates are moved to
/// where few of them are left: never more than given where gates on two qubits and layers are as
/// many. With a device the given
/// gates on two qubits are on its edges, and so are those of the result.
///
/// Throws std::invalid_argument for gates that are neither Clifford gates nor rotations, for gates
/// that are not on edges of the device, and for options that do not fit.
ZELTBRAIDWERK_EXPORT OptimizeResult optimize_circuit(int n,
                                                     const std::vector<structures::Gate>& gates,
                                                     const OptimizeOptions& options = {});

/// The phase that a circuit found by optimize_circuit lacks, from its stages: the operator of the
/// given gates on n qubits is exp(i phase) times that of the gates of the last stage, with output q
/// of the given circuit on wire permutation[q] of it. In radians, above -pi and at most pi. As
/// everywhere "S" and "D-S" are "RZ" by pi/2 and -pi/2, and "PH" is "RZ". Symbolic angles leave it
/// as it is.
///
/// O(gates n / 64), and O(n^2 / 64) for each H and each quarter turn about X or Y.
ZELTBRAIDWERK_EXPORT double global_phase(int n, const std::vector<structures::Gate>& gates,
                                         const std::vector<OptimizeStage>& stages);

}  // namespace synthesis
