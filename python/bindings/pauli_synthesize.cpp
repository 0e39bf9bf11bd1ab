#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "module.h"
#include "operations.h"
#include "synthesize.h"
#include "zeltbraidwerk/pauli/synthesize.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using synthesis::PauliOptions;
using synthesis::PauliResult;
using synthesis::SynthesisResult;

void bind_pauli_synthesize(nb::module_& m) {
  m.def("_pauli_methods", &synthesis::pauli_methods, "on_device"_a);
  m.def(
      "_synthesize_pauli",
      [](const Letters& letters, const CommonOptions& common, bool in_order,
         std::optional<structures::OperatorTableau> tail,
         const std::vector<structures::Parameter>& angles)
          -> std::tuple<SynthesisResult, Operations, bool> {
        const PauliTable table = to_strings(letters);
        const auto qubits = static_cast<int>(letters.shape(1));
        PauliOptions own;
        own.in_order = in_order;
        own.tail = std::move(tail);
        PauliResult result = synthesized(common, own, [&](const PauliOptions& options) {
          return synthesis::synthesize_pauli(qubits, table, angles, options);
        });
        // The angles stay in Python: a rotation comes back as its row and its sign.
        for (std::size_t k = 0; k < result.gates.size(); ++k) {
          if (result.rows[k] < 0) continue;
          structures::Parameter& angle = result.gates[k].params[0];
          angle = angle == angles[static_cast<std::size_t>(result.rows[k])] ? 1.0 : -1.0;
        }
        Operations operations = to_operations(result.gates, result.rows);
        return {std::move(result), std::move(operations), result.in_order};
      },
      "letters"_a, "options"_a, "in_order"_a, "tail"_a.none(), "angles"_a);
}

}  // namespace zelt::braidwerk::python
