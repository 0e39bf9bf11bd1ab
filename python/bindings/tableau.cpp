#include <nanobind/operators.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <algorithm>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"
#include "zeltbraidwerk/foundations/weyl.h"

namespace zelt::braidwerk::python {

using namespace structures;
using nb::literals::operator""_a;

namespace {

constexpr int most_qubits = 1 << 24;  // so that their doubles are in range

void bind_constants(nb::module_& m) {
  const std::pair<const char*, const std::vector<unsigned char>&> matrices[] = {
      {"CNOT", CNOT}, {"CZ", CZ},   {"XX", XX},   {"XX_INV", XX_INV}, {"H", H},     {"RZP", RZP},
      {"RZM", RZM},   {"RXP", RXP}, {"RXM", RXM}, {"RYP", RYP},       {"RYM", RYM}, {"X", X},
      {"Y", Y},       {"Z", Z}};
  for (const auto& [name, entries] : matrices) m.attr(name) = to_numpy_square(entries);
  const std::pair<const char*, const std::vector<unsigned char>&> letters[] = {
      {"WI", WI}, {"WX", WX}, {"WZ", WZ}, {"WY", WY}};
  for (const auto& [name, entries] : letters) m.attr(name) = to_numpy(entries);
  m.attr("SILUAP") = to_numpy(SILUAP);
}

template <void (*multiply)(std::vector<unsigned char>&, int, const std::vector<unsigned char>&,
                           std::vector<int>&)>
ByteArray2 multiplied(const ArrayLike& m, int n, const ArrayLike& g, std::vector<int> idx) {
  check_size(n, "n");
  check_at_most(n, most_qubits, "n");
  std::vector<unsigned char> entries = to_exponents(m, 2 * n + 1, "m");
  check_indices(idx, 2 * n + 1, "idx");
  multiply(entries, n, to_exponents(g, static_cast<int>(idx.size()), "g"), idx);
  return to_numpy_square(entries);
}

/// In blocks, as what stands in columns there stands in rows here.
std::pair<BoolArray1, ByteArray1> images_of(const OperatorTableau& t) {
  constexpr std::size_t block = 64;
  const auto n = static_cast<std::size_t>(t.nbqbits);
  const std::size_t size = 2 * n + 1;
  std::vector<unsigned char> minus(2 * n);
  std::vector<unsigned char> codes(2 * n * n);
  const auto take = [&](std::size_t q, std::size_t first) {
    const unsigned char* z = t.data.data() + (1 + q) * size + 1;
    for (std::size_t r = first; r < std::min(first + block, 2 * n); ++r) {
      const auto& [negative, letter] = SILUAP[4 * std::size_t{z[r]} + z[n * size + r]];
      minus[r] ^= negative;
      codes[r * n + q] = letter;
    }
  };
  for (std::size_t first = 0; first < 2 * n; first += block) {
    for (std::size_t q = 0; q < n; ++q) take(q, first);
  }
  return {to_numpy(BoolRow(minus.begin(), minus.end())), to_numpy(codes)};
}

using Tableau = nb::class_<OperatorTableau>;

template <void (OperatorTableau::*update)(int)>
void bind_update(Tableau& tableau, const char* name) {
  tableau.def(
      name,
      [](OperatorTableau& t, int q) {
        check_index(q, t.nbqbits, "q");
        (t.*update)(q);
      },
      "q"_a);
}

template <void (OperatorTableau::*update)(int, int)>
void bind_update(Tableau& tableau, const char* name) {
  tableau.def(
      name,
      [](OperatorTableau& t, int a, int b) {
        check_two_qubits(a, b, t.nbqbits);
        (t.*update)(a, b);
      },
      "a"_a, "b"_a);
}

void bind_updates(Tableau& t) {
  using T = OperatorTableau;
  bind_update<&T::cnot_left>(t, "cnot_left");
  bind_update<&T::cnot_right>(t, "cnot_right");
  bind_update<&T::cz_left>(t, "cz_left");
  bind_update<&T::cz_right>(t, "cz_right");
  bind_update<&T::xx_left>(t, "xx_left");
  bind_update<&T::xx_right>(t, "xx_right");
  bind_update<&T::h_left>(t, "h_left");
  bind_update<&T::h_right>(t, "h_right");
  bind_update<&T::rx_plus_left>(t, "rx_plus_left");
  bind_update<&T::rx_plus_right>(t, "rx_plus_right");
  bind_update<&T::rx_minus_left>(t, "rx_minus_left");
  bind_update<&T::rx_minus_right>(t, "rx_minus_right");
  bind_update<&T::ry_plus_left>(t, "ry_plus_left");
  bind_update<&T::ry_plus_right>(t, "ry_plus_right");
  bind_update<&T::ry_minus_left>(t, "ry_minus_left");
  bind_update<&T::ry_minus_right>(t, "ry_minus_right");
  bind_update<&T::rz_plus_left>(t, "rz_plus_left");
  bind_update<&T::rz_plus_right>(t, "rz_plus_right");
  bind_update<&T::rz_minus_left>(t, "rz_minus_left");
  bind_update<&T::rz_minus_right>(t, "rz_minus_right");
  bind_update<&T::x_left>(t, "x_left");
  bind_update<&T::x_right>(t, "x_right");
  bind_update<&T::y_left>(t, "y_left");
  bind_update<&T::y_right>(t, "y_right");
  bind_update<&T::z_left>(t, "z_left");
  bind_update<&T::z_right>(t, "z_right");
  bind_update<&T::swap_left>(t, "swap_left");
  bind_update<&T::swap_right>(t, "swap_right");
}

template <void (OperatorTableau::*apply)(const Gate&)>
void applied(OperatorTableau& t, const Gate& gate) {
  check_gate(gate, t.nbqbits);
  (t.*apply)(gate);
}

void bind_operator_tableau(nb::module_& m) {
  Tableau tableau(m, "OperatorTableau",
                  "A Clifford operator as a matrix of exponents modulo 4 on Weyl vectors.");
  tableau.def(nb::init<>())
      .def(
          "__init__",
          [](OperatorTableau* self, int n) {
            check_square(n, "n", 4);
            new (self) OperatorTableau(n);
          },
          "n"_a, "The identity.")
      .def(nb::init<const OperatorTableau&>(), "other"_a, "A copy.")
      .def_ro("nbqbits", &OperatorTableau::nbqbits)
      .def_prop_rw(
          "data", [](const OperatorTableau& t) { return to_numpy_square(t.data); },
          [](OperatorTableau& t, const ArrayLike& data) {
            t.data = to_exponents(data, 2 * t.nbqbits + 1, "data");
          },
          nb::for_getter(nb::rv_policy::automatic),
          "The (2n+1) by (2n+1) exponents, copied out and in.")
      .def("apply_left", applied<&OperatorTableau::apply_left>, "g"_a)
      .def("apply_right", applied<&OperatorTableau::apply_right>, "g"_a)
      .def(
          "multiply_right",
          [](OperatorTableau& t, const OperatorTableau& other) {
            check_tableau(t, t.nbqbits, "self");
            check_tableau(other, t.nbqbits, "other");
            unlocked([&] { t.multiply_right(other); });
          },
          "other"_a, "This tableau times the other, in place.")
      .def("inverse",
           [](const OperatorTableau& t) { return unlocked([&] { return t.inverse(); }); })
      .def("_images", images_of,
           "Whether minus, and letters 0 to 3 one after the other: of the images of Z, then of X, "
           "on each qubit.")
      .def("to_string", &OperatorTableau::to_string)
      .def(nb::self == nb::self, nb::sig("def __eq__(self, other: object, /) -> bool"))
      .def("__str__", &OperatorTableau::to_string)
      .def("__repr__", [](const OperatorTableau& t) {
        return "<OperatorTableau on " + std::to_string(t.nbqbits) + " qubits>";
      });
  bind_updates(tableau);
}

void bind_weyl(nb::module_& m) {
  nb::class_<WeylOperator>(m, "WeylOperator", "One Pauli operator as exponents modulo 4.")
      .def(nb::init<std::string>(), "s"_a, "From letters; any but X, Y and Z reads as I.")
      .def_ro("nbqbits", &WeylOperator::nbqbits)
      .def_prop_ro(
          "data", [](const WeylOperator& w) { return to_numpy(w.data); }, nb::rv_policy::automatic)
      .def(
          "conjugate_with",
          [](WeylOperator& w, const OperatorTableau& t) {
            check_tableau(t, w.nbqbits, "t");
            w.conjugate_with(t);
          },
          "t"_a)
      .def("to_pauli", &WeylOperator::to_pauli, "(True for minus, the letters).")
      .def("to_string", &WeylOperator::to_string)
      .def_static(
          "pauli_z",
          [](int q, int n) {
            check_index(q, n, "q");
            check_memory(5.0 * n, "n", n);
            return WeylOperator::pauli_z(q, n);
          },
          "q"_a, "n"_a)
      .def_static(
          "pauli_x",
          [](int q, int n) {
            check_index(q, n, "q");
            check_memory(5.0 * n, "n", n);
            return WeylOperator::pauli_x(q, n);
          },
          "q"_a, "n"_a)
      .def(nb::self == nb::self, nb::sig("def __eq__(self, other: object, /) -> bool"))
      .def("__str__", &WeylOperator::to_string)
      .def("__repr__",
           [](const WeylOperator& w) { return "<WeylOperator " + w.to_string() + ">"; });
}

}  // namespace

void bind_tableau(nb::module_& m) {
  bind_constants(m);
  m.def("mult_left", multiplied<mult_left>, "m"_a, "n"_a, "g"_a, "idx"_a,
        "The matrix m with its rows idx multiplied by g, modulo 4.");
  m.def("mult_right", multiplied<mult_right>, "m"_a, "n"_a, "g"_a, "idx"_a,
        "The matrix m with its columns idx multiplied by g, modulo 4.");
  bind_operator_tableau(m);
  bind_weyl(m);
}

}  // namespace zelt::braidwerk::python
