#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

/// A network of parities, and the circuit that undoes what its CNOTs leave.
struct ClosedNetwork {
  std::vector<PhaseStep> steps;
  FreeCircuit closing;

  /// Of the network, then of the closing.
  structures::CnotCircuit cnots() const;
};

/// The runs of "gray" and "greedy". Run 0 takes the qubits in their order and the usual weights;
/// later ones rename the qubits, or draw the weights. Each run is closed by one quick synthesis, so
/// that the size of the whole decides.
struct PhaseRuns {
  const BitMatrix& parities;
  const BitGraph* device;  ///< null: any two qubits may be joined
  bool greedy;             ///< otherwise by GraySynth
  synthesis::Objective objective;
  synthesis::Outputs outputs;
  std::uint64_t seed;

  /// Nothing when stopped.
  std::optional<ClosedNetwork> make(int run, const RunControl& control) const;

 private:
  int qubits() const { return parities.rows(); }
  std::optional<std::vector<PhaseStep>> network(int run, const Draw& draw,
                                                const Control& control) const;
  std::vector<PhaseStep> along_device(BitMatrix table, const std::vector<int>& names) const;
  std::optional<FreeCircuit> closed_by(const BitMatrix& m, const Draw& draw,
                                       const Control& control) const;
};

}  // namespace zelt::braidwerk::internal
