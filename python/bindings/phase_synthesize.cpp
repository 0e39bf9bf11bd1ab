#include <tuple>
#include <utility>

#include "module.h"
#include "synthesize.h"
#include "zeltbraidwerk/phase/internal/synthesize.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using synthesis::PhaseOptions;
using synthesis::SynthesisResult;

void bind_phase_synthesize(nb::module_& m) {
  m.def("_phase_methods", &synthesis::phase_methods, "on_device"_a);
  m.def(
      "_synthesize_phase",
      [](const ArrayLike& parities, int qubits, int terms,
         const CommonOptions& common) -> std::tuple<SynthesisResult, IntArray2> {
        const BitMatrix bits = to_bits(parities, qubits, terms, "parities");
        auto result = synthesized(common, PhaseOptions{}, [&](const PhaseOptions& options) {
          return internal::synthesize_phase(bits, options);
        });
        TableOf<int> steps;
        for (const auto& [control, target, term] : result.steps) {
          steps.push_back({control, target, term});
        }
        return {std::move(result), to_numpy(steps)};
      },
      "parities"_a, "qubits"_a, "terms"_a, "options"_a,
      "Rows of three: control, or -1 for a phase; target; term, or -1 for a CNOT.");
}

}  // namespace zelt::braidwerk::python
