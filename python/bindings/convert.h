#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/vector.h>

#include <tuple>
#include <utility>
#include <vector>

#include "checks.h"
#include "unlocked.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

/// \file
/// The way between numpy and the library. Matrices go straight to packed words and back; an array
/// of the caller is never changed. Shapes and entries are checked here, before room is made for
/// them; what fits together is checked in checks.h.
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

/// Raises TypeError where the value is no T, in a container that is read by hand.
template <class T>
T to_value(nb::handle source, const char* name, const char* wanted) {
  T value;
  if (!nb::try_cast(source, value)) {
    nb::raise_type_error("%s: got an object of class %s, wanted %s", name,
                         nb::type_name(source.type()).c_str(), wanted);
  }
  return value;
}

/// The leading block of a 0/1 matrix: bool or 0/1 integers, array or nested list.
BitMatrix to_bits(const ArrayLike& value, int rows, int cols, const char* name);
/// The whole of it, of whatever shape.
BitMatrix to_bits(const ArrayLike& value, const char* name);
BoolMatrix to_bool_matrix(const ArrayLike& value, int rows, int cols, const char* name);
BoolRow to_bool_row(const ArrayLike& value, int size, const char* name);
/// The leading size by size block of a table of int or double, whose entries are finite and lie
/// between -most - 1 and most, so that no sum of a few of them overflows.
template <class T>
TableOf<T> to_table(const ArrayLike& value, int size, const char* name, T most = 1 << 24);
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

/// Lists of gates may have millions: Ctrl-C ends the writing of one.
template <>
struct type_caster<std::vector<structures::Gate>>
    : list_caster<std::vector<structures::Gate>, structures::Gate> {
  template <typename T>
  static handle from_cpp(T&& gates, rv_policy policy, cleanup_list* cleanup) noexcept {
    constexpr std::size_t per_look = 1 << 12;
    object list = steal(PyList_New(static_cast<Py_ssize_t>(gates.size())));
    if (!list.is_valid()) return {};
    for (std::size_t k = 0; k < gates.size(); ++k) {
      if (k % per_look == per_look - 1 && zelt::braidwerk::python::signal_raised()) return {};
      const handle gate = Caster::from_cpp(forward_like_<T>(gates[k]), policy, cleanup);
      if (!gate.is_valid()) return {};
      PyList_SetItem(list.ptr(), static_cast<Py_ssize_t>(k), gate.ptr());
    }
    return list.release();
  }
};

NAMESPACE_END(detail)
NAMESPACE_END(NB_NAMESPACE)
