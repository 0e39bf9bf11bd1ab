#include <tuple>
#include <utility>
#include <vector>

#include "module.h"
#include "synthesize.h"
#include "zeltbraidwerk/circuit/optimize.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using synthesis::OptimizeOptions;
using synthesis::OptimizeResult;
using synthesis::SynthesisResult;

void bind_circuit_optimize(nb::module_& m) {
  m.def(
      "_optimize_circuit",
      [](int n, const std::vector<structures::Gate>& gates, const CommonOptions& common)
          -> std::tuple<SynthesisResult, std::vector<structures::Gate>, double> {
        for (const structures::Gate& gate : gates) check_gate(gate, n);
        OptimizeResult result =
            synthesized(common, OptimizeOptions{}, [&](const OptimizeOptions& options) {
              return synthesis::optimize_circuit(n, gates, options);
            });
        std::vector<structures::Gate> found = std::move(result.gates);
        const double rounding = result.rounding;
        return {std::move(result), std::move(found), rounding};
      },
      "n"_a, "gates"_a, "options"_a);
}

}  // namespace zelt::braidwerk::python
