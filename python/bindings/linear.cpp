#include <nanobind/stl/tuple.h>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/linear/internal/elimination.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::CnotCircuit;

namespace {

CnotCircuit pmh(int n, const ArrayLike& m, int section) {
  check_at_least(section, 1, "section");
  if (section > 30 && n > 30) raise_value_error("section: got %d, wanted at most 30", section);
  BitMatrix bits = to_bits(m, n, n, "m");
  return unlocked([&] { return internal::pmh(std::move(bits), section); });
}

CnotCircuit gauss(int n, const ArrayLike& m) {
  BitMatrix bits = to_bits(m, n, n, "m");
  return unlocked([&] { return internal::eliminate_gauss(std::move(bits)); });
}

CnotCircuit optimized_pmh(int n, const ArrayLike& m) {
  const BitMatrix bits = to_bits(m, n, n, "m");
  return unlocked([&] { return internal::optimized_pmh(bits); });
}

}  // namespace

void bind_linear(nb::module_& m) {
  m.def("GaussianElimination", gauss, "n"_a, "m"_a,
        "The circuit of the inverse of m, by plain elimination.");
  m.def("PMH_Algorithm", pmh, "n"_a, "m"_a, "section"_a,
        "The circuit of the inverse of m, by elimination in sections of columns.");
  m.def("optimized_PMH_Algorithm", optimized_pmh, "n"_a, "m"_a,
        "The shortest PMH_Algorithm circuit over the useful sections.");
}

}  // namespace zelt::braidwerk::python
