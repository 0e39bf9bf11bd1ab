#pragma once

#include <cstdint>

#include "zeltbraidwerk/clifford/search/internal/circuit.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// Whether these can be the images of X, then of Z, on all qubits under an operator.
bool are_images_of_operator(const PauliFrame& images);

/// What a search does on five and six qubits, where layers are not asked for.
enum class OnFewQubits : std::uint8_t {
  searches,  ///< as on more
  /// Finds the fewest gates, on five from the first step on, in some milliseconds, on six from some
  /// rounds on: proves that there are not fewer than a number that rises with the effort.
  finds_fewest,
};

/// A circuit of few CNOTs for the operator with these images of X, then of Z, on all qubits, signs
/// included. One greedy run whatever the effort, above 256 qubits a plain elimination, and a
/// layered form where there is time; then wider beams and walks in turns until it ends. By depth a
/// layered form comes first. On up to four qubits without a device no circuit is shorter. Images of
/// no operator give a circuit of another one.
///
/// A greedy run on n qubits takes about (n / 100)^3 / 20 seconds, a layered form as long or twice
/// as long. A state of a beam takes one byte per pair of qubits, 100 on up to 18 qubits; tables of
/// windows 32 MB, once, with outputs in place 12 MB more, and the tables for five and six qubits 6
/// and 23 MB; the search with the latter takes up to 100 MB more.
CliffordCircuit search_clifford(const PauliFrame& images, const Task& task, const Effort& effort,
                                OnFewQubits on_few = OnFewQubits::searches);

/// The same for images that are known to be those of an operator: to look takes O(n^3 / 64).
CliffordCircuit search_operator(const PauliFrame& images, const Task& task, const Effort& effort,
                                OnFewQubits on_few);

/// The same as a list of gates, signs left out, of any images.
GateList clifford_list(const PauliFrame& images, const Task& task, const Effort& effort,
                       OnFewQubits on_few = OnFewQubits::searches);

}  // namespace zelt::braidwerk::internal
