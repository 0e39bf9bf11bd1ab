#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

#include <mutex>
#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

/// \file
/// The way between numpy and the library. Matrices go straight to packed words and back; an array
/// of the caller is never changed. Shapes, entries and indices are checked here, since the library
/// itself checks none.
namespace zelt::braidwerk::python {

namespace nb = nanobind;
using internal::BitMatrix;

using BoolArray1 = nb::ndarray<nb::numpy, bool, nb::ndim<1>>;
using BoolArray2 = nb::ndarray<nb::numpy, bool, nb::ndim<2>>;
using ByteArray1 = nb::ndarray<nb::numpy, unsigned char, nb::ndim<1>>;
using ByteArray2 = nb::ndarray<nb::numpy, unsigned char, nb::ndim<2>>;
using IntArray2 = nb::ndarray<nb::numpy, int, nb::ndim<2>>;
using DoubleArray2 = nb::ndarray<nb::numpy, double, nb::ndim<2>>;

using GateList = std::vector<std::tuple<int, int>>;
template <class T>
using TableOf = std::vector<std::vector<T>>;

/// An argument that stands for an array: numpy's ArrayLike. It is read by the functions below,
/// which know its name and the shape they want, so that an error can tell.
struct ArrayLike {
  nb::object source;
};

/// The leading block of a 0/1 matrix: bool or 0/1 integers, array or nested list.
BitMatrix to_bits(const ArrayLike& value, int rows, int cols, const char* name);
/// The whole of it, of whatever shape.
BitMatrix to_bits(const ArrayLike& value, const char* name);
BoolMatrix to_bool_matrix(const ArrayLike& value, int rows, int cols, const char* name);
BoolRow to_bool_row(const ArrayLike& value, int size, const char* name);
/// The leading size by size block of a table of int or double.
template <class T>
TableOf<T> to_table(const ArrayLike& value, int size, const char* name);
/// A square matrix of exponents modulo 4, row-major.
std::vector<unsigned char> to_exponents(const ArrayLike& value, int size, const char* name);
/// A symmetric matrix of edges.
internal::BitGraph to_graph(const ArrayLike& adjacency);
/// (control, target) pairs, qubits from 0 to n-1.
GateList to_gates(const ArrayLike& value, int n, const char* name);

BoolArray1 to_numpy(const BoolRow& row);
BoolArray2 to_numpy(const BitMatrix& m);
BoolArray2 to_numpy(const BoolMatrix& m);
IntArray2 to_numpy(const GateList& gates);
IntArray2 to_numpy(const TableOf<int>& table);
DoubleArray2 to_numpy(const TableOf<double>& table);
ByteArray1 to_numpy(const std::vector<unsigned char>& bytes);
/// One row per pair.
ByteArray2 to_numpy(const std::vector<std::pair<unsigned char, unsigned char>>& pairs);
ByteArray2 to_numpy_square(const std::vector<unsigned char>& bytes);

/// Raise with a text in the manner of printf: the argument's name, what came, what is wanted.
[[noreturn, gnu::format(printf, 1, 2)]] void raise_value_error(const char* format, ...);
[[noreturn, gnu::format(printf, 1, 2)]] void raise_index_error(const char* format, ...);

/// Raises IndexError unless 0 <= value < size.
void check_index(int value, int size, const char* name);
/// The same for each value.
void check_indices(const std::vector<int>& values, int size, const char* name);
/// Raises ValueError unless the values are 0 to n-1 in some order.
void check_permutation(const std::vector<int>& values, int n, const char* name);
/// Raises ValueError for a beam of no states, or of more than an int counts.
void check_beam(int width, int depth);
/// Raises ValueError unless value >= least.
void check_at_least(int value, int least, const char* name);
/// Raises IndexError for a qubit beyond n.
void check_gates(const GateList& gates, int n);
/// Raises IndexError for a qubit beyond n, ValueError for too few qubits or a missing angle.
void check_gate(const structures::Gate& gate, int n);

/// Runs f without the interpreter lock; f touches no Python object.
template <class F>
auto unlocked(F&& f) {
  const nb::gil_scoped_release release;
  return std::forward<F>(f)();
}

inline std::mutex shared_streams;

/// As unlocked, for what draws from the library's shared generator or writes to standard output:
/// one call at a time.
template <class F>
auto unlocked_alone(F&& f) {
  const nb::gil_scoped_release release;
  const std::lock_guard guard(shared_streams);
  return std::forward<F>(f)();
}

}  // namespace zelt::braidwerk::python

NAMESPACE_BEGIN(NB_NAMESPACE)
NAMESPACE_BEGIN(detail)

template <>
struct type_caster<zelt::braidwerk::python::ArrayLike> {
  NB_TYPE_CASTER(zelt::braidwerk::python::ArrayLike, const_name("numpy.typing.ArrayLike"))

  bool from_python(handle src, uint32_t, cleanup_list*) noexcept {
    value.source = borrow(src);
    return true;
  }
};

NAMESPACE_END(detail)
NAMESPACE_END(NB_NAMESPACE)
