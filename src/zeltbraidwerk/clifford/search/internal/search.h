#pragma once

#include <cstdint>

#include "zeltbraidwerk/clifford/search/internal/circuit.h"
#include "zeltbraidwerk/clifford/search/internal/window_table.h"
#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

struct CliffordOptions {
  Outputs outputs = Outputs::in_place;
  std::uint64_t seed = 0;
  std::uint64_t stream = 0;  ///< one a run
};

struct CliffordResult {
  CliffordCircuit circuit;
  int count = 0;  ///< gates on two wires
  int depth = 0;  ///< layers of these
};

/// A circuit of few CNOTs for the operator with these images of X, then of Z, on all qubits, signs
/// included. One greedy run whatever the effort; then wider beams and a walk in turns until it
/// ends. Images of no operator end as well, in a circuit of another one.
///
/// 200 bytes a pair of qubits for each state of a beam; 32 MB for the table of windows, once.
ZELTBRAIDWERK_KERNEL_EXPORT CliffordResult search_clifford(const PauliFrame& images,
                                                           const CliffordOptions& options,
                                                           const Effort& effort);

}  // namespace zelt::braidwerk::internal
