#pragma once

namespace synthesis {

/// What is to become small: the gates on two qubits, or the layers of these. The other one decides
/// between equals.
enum class Objective {
  count,  ///< gates on two qubits
  depth,  ///< layers of these
};

/// Where the outputs of a circuit may end.
enum class Outputs {
  in_place,      ///< every output on the wire of its input
  within_reach,  ///< on a device, a given number of edges away from there
  anywhere,      ///< on any wire: the result tells the permutation
  left_open,  ///< what the CNOTs or Clifford gates leave is not undone: the result tells what it is
};

}  // namespace synthesis
