#pragma once

#include <iosfwd>
#include <map>
#include <tuple>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/gate.h"

namespace structures {

/// A list of CNOTs on a fixed number of qubits, in time order: the form in which linear reversible
/// circuits are built. Qubits are not compared with `nbqbits`, except by whoever calls Simulate.
class ZELTBRAIDWERK_EXPORT CnotCircuit {
 public:
  int nbqbits = 1;                          ///< number of qubits
  std::vector<std::tuple<int, int>> gates;  ///< (control, target), the first acts first

  CnotCircuit() = default;      ///< one qubit, not none
  explicit CnotCircuit(int n);  ///< n qubits, no gates
  /// n qubits and these gates.
  CnotCircuit(int n, const std::vector<std::tuple<int, int>>& gates);

  int get_number_of_qubits() const;                    ///< `nbqbits`
  std::vector<std::tuple<int, int>> getGates() const;  ///< `gates`

  void addGate(int control, int target);  ///< appends a gate
  /// Puts the gate before the one at index `position`; the length of the list appends.
  void insertGate(int control, int target, int position);
  /// Reverses the list in place. A CNOT is its own inverse, so this is the inverse circuit.
  void reverse();

  /// The operator: the identity, then RowOperation(m, control, target, nbqbits) a gate.
  BoolMatrix Simulate() const;

  /// one Gate::CNOT per gate, in order.
  std::vector<Gate> to_circuit() const;

  /// Appends to three parallel lists what wire w holds along the circuit: its unit parity at
  /// position 0, then for each gate with target w (at index i of the list) the parity after that
  /// gate, at position i + 1. A gate inserted at a position sees that parity.
  ///
  /// `idx` lists distinct wires and must hold w. An addition covers only the wires of `idx` up to
  /// and including its control; a control outside `idx` adds nothing but is recorded all the same.
  /// Nothing in the circuit changes. Cost O(gates * n / 64).
  void get_parities(BoolMatrix& H, int n, std::vector<int>& positions, std::vector<int>& wires,
                    int w, std::vector<int>& idx);

  /// Number of layers when every gate is placed as soon as its qubits are free.
  int depth() const;

  bool operator==(const CnotCircuit&) const = default;
};

/// A header line with the number of qubits, then "CNOT control target" a line.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const CnotCircuit& circuit);

/// CNOT depth of a gate list: only gates named "CNOT" take time. Writes to standard output as it
/// goes: each gate a line, then "Nbqbits: " and the largest qubit number plus one.
ZELTBRAIDWERK_EXPORT int cnot_depth(const std::vector<Gate>& gates);

/// The bits in order, without separator or line end.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const BoolRow& row);

/// One line per entry in key order: `[101] : 3`.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out,
                                              const std::map<BoolRow, int>& parities);

/// A parity network: its parities with their phases, and the final operator.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(
    std::ostream& out, const std::tuple<std::map<BoolRow, int>, BoolMatrix>& network);

}  // namespace structures

/// Each value followed by one blank. One function, visible in three namespaces.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const std::vector<int>& values);

namespace structures {
using ::operator<<;
}  // namespace structures

namespace routines {
using ::operator<<;
}  // namespace routines
