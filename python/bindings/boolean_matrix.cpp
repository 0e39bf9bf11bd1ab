#include "zeltbraidwerk/foundations/boolean_matrix.h"

#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <array>
#include <limits>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/foundations/random.h"
#include "zeltbraidwerk/foundations/signal_handler.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;

namespace {

constexpr int most_int = std::numeric_limits<int>::max();

/// An operation that changes the matrix it is given; here the changed matrix is returned.
template <void (*operation)(BoolMatrix&, int, int, int)>
BoolArray2 changed(const ArrayLike& m, int i, int j, int n) {
  check_indices(std::array{i, j}, n, "i, j");
  BoolMatrix matrix = to_bool_matrix(m, n, n, "m");
  operation(matrix, i, j, n);
  return to_numpy(matrix);
}

template <int (*saving)(const BoolMatrix&, int, int, int)>
int saved(const ArrayLike& m, int i, int j, int n) {
  check_indices(std::array{i, j}, n, "i, j");
  return saving(to_bool_matrix(m, n, n, "m"), i, j, n);
}

void bind_line_operations(nb::module_& m) {
  m.def("RowOperation", changed<RowOperation>, "m"_a, "i"_a, "j"_a, "n"_a,
        "The matrix with row i added to row j.");
  m.def("ColumnOperation", changed<ColumnOperation>, "m"_a, "i"_a, "j"_a, "n"_a,
        "The matrix with column i added to column j.");
  m.def("RowOperation_upper", changed<RowOperation_upper>, "m"_a, "i"_a, "j"_a, "n"_a,
        "The matrix with row i added to row j on the columns from i on.");
  m.def("SavingRowOperation", saved<SavingRowOperation>, "m"_a, "i"_a, "j"_a, "n"_a,
        "The number of ones that RowOperation would remove.");
  m.def("SavingColumnOperation", saved<SavingColumnOperation>, "m"_a, "i"_a, "j"_a, "n"_a,
        "The number of ones that ColumnOperation would remove.");
}

void bind_algebra(nb::module_& m) {
  m.def(
      "boolean_matrix_product",
      [](int rows, int cols, int inner, const ArrayLike& a, const ArrayLike& b) {
        const BitMatrix left = to_bits(a, rows, inner, "a");
        const BitMatrix right = to_bits(b, inner, cols, "b");
        check_memory(static_cast<double>(rows) * cols, "rows", rows);  // where inner is 0
        return to_numpy(unlocked([&] { return internal::product(left, right); }));
      },
      "rows"_a, "cols"_a, "inner"_a, "a"_a, "b"_a, "The product over GF(2).");
  m.def(
      "boolean_matrix_inverse",
      [](int n, const ArrayLike& m_) {
        BitMatrix bits = to_bits(m_, n, n, "m");
        return to_numpy(unlocked([&] { return internal::inverse(std::move(bits)); }));
      },
      "n"_a, "m"_a, "The inverse over GF(2); of a singular matrix a matrix that is no inverse.");
  m.def(
      "boolean_matrix_det",
      [](const ArrayLike& m_, int n) {
        BitMatrix bits = to_bits(m_, n, n, "m");
        return unlocked([&] { return internal::is_invertible(std::move(bits)) ? 1 : 0; });
      },
      "m"_a, "n"_a, "1 when the leading n by n block is invertible, else 0.");
  m.def(
      "LU",
      [](const ArrayLike& m_, int n) {
        BitMatrix bits = to_bits(m_, n, n, "m");
        std::vector<int> rows(static_cast<std::size_t>(bits.rows()), -1);
        std::vector<int> cols = rows;
        unlocked([&] { internal::lu_factorise(bits, rows, cols); });
        return std::tuple(to_numpy(bits), rows, cols);
      },
      "m"_a, "n"_a,
      "(factors, rows, cols): the pivoting factorisation and its two pivot lists. On a singular "
      "matrix the lists end in -1.");
}

void bind_measures(nb::module_& m) {
  m.def(
      "count_bits", [](int n, const ArrayLike& m_) { return to_bits(m_, n, n, "m").weight(); },
      "n"_a, "m"_a, "The number of ones.");
  m.def(
      "findmax",
      [](int n, const ArrayLike& m_) { return findmax(n, to_table<int>(m_, n, "m", most_int)); },
      "n"_a, "m"_a, "The largest value.");
  m.def(
      "findmax_double",
      [](int n, const ArrayLike& m_) {
        return findmax_double(n, to_table<double>(m_, n, "m", most_int));
      },
      "n"_a, "m"_a, "The largest value, cut toward zero.");
  m.def("myPow", &myPow, "base"_a, "exponent"_a, "A power in wrapping 32-bit arithmetic.");
  m.def(
      "pretty_print",
      [](int n, const ArrayLike& m_) {
        const BoolMatrix matrix = to_bool_matrix(m_, n, n, "m");
        unlocked_alone([&] { pretty_print(n, matrix); });
      },
      "n"_a, "m"_a, "Writes the matrix to standard output.");
}

void bind_draws_and_signals(nb::module_& m) {
  m.def("get_random_seed", &random::get_random_seed, "Thirty-two bits of the random device.");
  m.def(
      "uniform",
      [](int a, int b) {
        check_at_least(b, a, "b");
        return unlocked_alone([&] { return random::uniform(a, b); });
      },
      "a"_a, "b"_a, "A draw from a to b, both included, from the library's shared generator.");
  m.def("setup_cpp_signal_handler", &setup_cpp_signal_handler,
        "Lets fatal signals and Ctrl-C end the process with a line on standard error.");
  m.def("cpp_signal_handler", &cpp_signal_handler, "sig"_a,
        "Names the signal on standard error and ends the process.");
}

}  // namespace

void bind_boolean_matrix(nb::module_& m) {
  bind_line_operations(m);
  bind_algebra(m);
  bind_measures(m);
  bind_draws_and_signals(m);
}

}  // namespace zelt::braidwerk::python
