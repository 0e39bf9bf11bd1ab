#pragma once

#include <vector>

#include "zeltbraidwerk/routing/metrics.h"
#include "zeltbraidwerk/routing/normal_form.h"

/// \file
/// Routing for ion machines, on which one "XX" gate entangles any set of qubits at once: one such
/// gate a rotation, whatever its support. As in D. Maslov, Y. Nam, "Use of global interactions in
/// efficient quantum circuit constructions", New Journal of Physics 20 (2018) 033018.

namespace synthesis {

/// As clifford_nnize, with gates "H", "RX", "XX" and "RZ". Of the current block the rotation with
/// the best score comes next. Its root is the qubit with the best composed score of it and of the
/// `depth` rotations after it; the smallest of its support with depth 0. An "XX" has the parameters
/// pi/2 and the number of its qubits. Throws what normalize_circuit throws.
ZELTBRAIDWERK_EXPORT void clifford_nnize_ion(const std::vector<structures::Gate>& circuit,
                                             int depth, bool commuting_blocks, bool merge,
                                             std::vector<structures::Gate>& out,
                                             structures::OperatorTableau& frame);

/// The same for a ShelveMetric, with its two errors.
ZELTBRAIDWERK_EXPORT void clifford_nnize_ion_shelving(const std::vector<structures::Gate>& circuit,
                                                      int depth, bool commuting_blocks, bool merge,
                                                      double pair_error, double shelve_error,
                                                      std::vector<structures::Gate>& out,
                                                      structures::OperatorTableau& frame);

/// One choice of the above: the best score. The outputs are those of cost_clifford_order; the
/// metric takes the chosen ions as its active set. Metric is DefaultMetric or ShelveMetric.
template <class Metric>
double clifford_cost_ions(int block, std::vector<RotationSequence>& blocks,
                          structures::OperatorTableau frame, int depth,
                          std::vector<structures::Gate>& gates, int& qubit, int& index, bool& flip,
                          Metric& metric);

extern template ZELTBRAIDWERK_EXPORT double clifford_cost_ions(int, std::vector<RotationSequence>&,
                                                               structures::OperatorTableau, int,
                                                               std::vector<structures::Gate>&, int&,
                                                               int&, bool&,
                                                               structures::DefaultMetric&);
extern template ZELTBRAIDWERK_EXPORT double clifford_cost_ions(int, std::vector<RotationSequence>&,
                                                               structures::OperatorTableau, int,
                                                               std::vector<structures::Gate>&, int&,
                                                               int&, bool&,
                                                               structures::ShelveMetric&);

}  // namespace synthesis
