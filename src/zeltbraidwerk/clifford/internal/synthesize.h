#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/encoder.h"
#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/synthesize.h"
#include "zeltbraidwerk/foundations/internal/clifford_gate.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

/// A result whose circuit is still in compact form.
struct FoundCliffords : synthesis::SynthesisResult {
  std::vector<CliffordGate> gates;
  std::vector<int> logical_wires = {};  ///< of an encoder
};

/// The result of a family.
template <class Result>
Result unpacked(FoundCliffords found) {
  Result result;
  result.gates = to_gates(found.gates);
  if constexpr (requires { result.logical_wires; }) {
    result.logical_wires = std::move(found.logical_wires);
  }
  static_cast<synthesis::SynthesisResult&>(result) = std::move(found);
  return result;
}

/// synthesize_clifford for the images of X, then of Z, on all qubits. Throws std::invalid_argument
/// for images of no operator.
FoundCliffords synthesize_clifford(const PauliFrame& images,
                                   const synthesis::CliffordOptions& options);

/// synthesize_state for signed stabilisers. Throws std::invalid_argument for others.
FoundCliffords synthesize_state(const PauliFrame& stabilisers,
                                const synthesis::StateOptions& options);

/// The device on which a state is searched for, checked; none where there is none. Throws
/// std::invalid_argument for one that is not connected, and for outputs that do not fit.
std::optional<BitGraph> device_of_state(const synthesis::SynthesisOptions& options, int n);

/// The runs of the search for a state; their circuits are lists of gates. `stabilisers` and
/// `device` outlive the lane.
Lane state_search_lane(const PauliFrame& stabilisers, const synthesis::SynthesisOptions& options,
                       const std::optional<BitGraph>& device, RunControl& control);

/// Adds the fewest gates of a state on up to nine qubits, which a table has (graph_classes.h),
/// where a result has more gates than is known to be needed. It takes up to 0.1 s, and is left
/// out where the budget is below 1 s. The search does not know it: once it has found as few gates,
/// it goes on for fewer layers.
void prove_by_table(synthesis::SynthesisResult& result, const PauliFrame& stabilisers,
                    const synthesis::SynthesisOptions& options);

/// synthesize_encoder for a code with signs.
FoundCliffords synthesize_encoder(const Code& code, const synthesis::EncoderOptions& options);

/// The steps of a run of a search for a state or a code on n qubits.
std::optional<std::uint64_t> steps_for_state(const PauliFrame& stabilisers,
                                             const synthesis::SynthesisOptions& options);

/// Throws std::invalid_argument for a device, and for outputs that are not in place.
void check_encoder_options(const synthesis::SynthesisOptions& options);

}  // namespace zelt::braidwerk::internal
