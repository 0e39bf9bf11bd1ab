#include <tuple>
#include <utility>
#include <vector>

#include "held_gates.h"
#include "module.h"
#include "operations.h"
#include "synthesize.h"
#include "zeltbraidwerk/clifford/internal/synthesize.h"
#include "zeltbraidwerk/graph_state/internal/synthesize.h"

/// \file
/// Circuits for Clifford operators, stabilizer states and graph states.
namespace zelt::braidwerk::python {

using internal::PauliFrame;
using nb::literals::operator""_a;
using synthesis::CliffordOptions;
using synthesis::EncoderOptions;
using synthesis::GraphStateOptions;
using synthesis::StateOptions;
using synthesis::SynthesisResult;

namespace {

using Found = std::tuple<SynthesisResult, HeldCliffords>;

PauliFrame signed_frame(const Letters& letters, const std::vector<bool>& minus) {
  if (minus.size() != letters.shape(0)) raise_value_error("minus: wanted one per string");
  PauliFrame frame = to_frame(letters);
  for (int r = 0; r < frame.rows(); ++r) frame.set_negative(r, minus[static_cast<std::size_t>(r)]);
  return frame;
}

Found to_found(internal::FoundCliffords result) {
  HeldCliffords gates{std::move(result.gates)};
  return {std::move(result), std::move(gates)};
}

}  // namespace

void bind_clifford_synthesize(nb::module_& m) {
  m.def("_clifford_methods", &synthesis::clifford_methods, "on_device"_a);
  m.def("_graph_state_methods", &synthesis::graph_state_methods, "on_device"_a);
  m.def("_state_methods", &synthesis::state_methods, "on_device"_a);
  m.def(
      "_synthesize_clifford",
      [](const Letters& letters, const std::vector<bool>& minus, const CommonOptions& common) {
        const PauliFrame images = signed_frame(letters, minus);
        return to_found(synthesized(common, CliffordOptions{}, [&](const CliffordOptions& options) {
          return internal::synthesize_clifford(images, options);
        }));
      },
      "letters"_a, "minus"_a, "options"_a,
      "The letters are images of X, then of Z, on all qubits.");
  m.def(
      "_synthesize_state",
      [](const Letters& letters, const std::vector<bool>& minus, const CommonOptions& common) {
        const PauliFrame stabilisers = signed_frame(letters, minus);
        return to_found(synthesized(common, StateOptions{}, [&](const StateOptions& options) {
          return internal::synthesize_state(stabilisers, options);
        }));
      },
      "letters"_a, "minus"_a, "options"_a);
  m.def(
      "_synthesize_encoder",
      [](const Letters& letters, const std::vector<bool>& minus, const Letters& logicals,
         const std::vector<bool>& logicals_minus, const CommonOptions& common) {
        const internal::Code code{signed_frame(letters, minus),
                                  signed_frame(logicals, logicals_minus)};
        auto result = synthesized(common, EncoderOptions{}, [&](const EncoderOptions& options) {
          return internal::synthesize_encoder(code, options);
        });
        HeldCliffords gates{std::move(result.gates)};
        std::vector<int> wires = std::move(result.logical_wires);
        return std::tuple<SynthesisResult, HeldCliffords, std::vector<int>>(
            std::move(result), std::move(gates), std::move(wires));
      },
      "letters"_a, "minus"_a, "logicals"_a, "logicals_minus"_a, "options"_a,
      "Logicals are images of X, then of Z, on all logical qubits, or none.");
  m.def(
      "_synthesize_graph_state",
      [](const ArrayLike& graph, const CommonOptions& common, std::optional<int> tries) {
        const BitMatrix bits = to_bits(graph, "graph");
        GraphStateOptions own;
        own.tries = tries;
        return to_found(synthesized(common, own, [&](const GraphStateOptions& options) {
          return internal::synthesize_graph_state(bits, options);
        }));
      },
      "graph"_a, "options"_a, "tries"_a.none());
}

}  // namespace zelt::braidwerk::python
