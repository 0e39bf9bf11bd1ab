#include <tuple>
#include <utility>
#include <vector>

#include "module.h"
#include "synthesize.h"
#include "zeltbraidwerk/linear/internal/synthesize.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using synthesis::LinearOptions;
using synthesis::LinearResult;
using synthesis::SynthesisResult;

void bind_linear_synthesize(nb::module_& m) {
  using Circuit = std::tuple<IntArray2, std::vector<int>>;  // gates, permutation
  m.def("_linear_methods", &synthesis::linear_methods, "on_device"_a);
  m.def(
      "_synthesize_linear",
      [](const ArrayLike& matrix, const CommonOptions& common, std::optional<int> section,
         std::optional<int> width, std::optional<int> lookahead, int reach, std::vector<int> path)
          -> std::tuple<SynthesisResult, IntArray2, int, std::vector<Circuit>> {
        const BitMatrix bits = to_bits(matrix, "matrix");
        LinearOptions own;
        own.section = section;
        own.width = width;
        own.lookahead = lookahead;
        own.reach = reach;
        own.path = std::move(path);
        LinearResult result =
            synthesized(common, std::move(own), [&](const LinearOptions& options) {
              return internal::synthesize_linear(bits, options);
            });
        std::vector<Circuit> front;
        for (auto& [circuit, permutation] : result.front) {
          front.emplace_back(to_numpy(circuit.gates), std::move(permutation));
        }
        IntArray2 gates = to_numpy(result.circuit.gates);
        return {std::move(result), std::move(gates), result.window, std::move(front)};
      },
      "matrix"_a, "options"_a, "section"_a.none(), "width"_a.none(), "lookahead"_a.none(),
      "reach"_a, "path"_a);
}

}  // namespace zelt::braidwerk::python
