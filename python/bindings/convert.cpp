#include "convert.h"

#include <nanobind/stl/string.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"

namespace zelt::braidwerk::python {
namespace {

using internal::Word;
using internal::word_bits;

template <class T, int dims>
using View = nb::ndarray<const T, nb::ndim<dims>, nb::device::cpu>;

nb::object numpy(const char* function) {
  return nb::module_::import_("numpy").attr(function);
}

std::string text(nb::handle value) {
  return nb::cast<std::string>(nb::str(value));
}

/// numpy's own reading of the value. An empty list has no dtype of its own and fits any.
nb::object as_array(const ArrayLike& value, const char* kinds, const char* wanted,
                    const char* name) {
  nb::object array = numpy("asarray")(value.source);
  const auto kind = nb::cast<std::string>(array.attr("dtype").attr("kind"));
  const auto size = nb::cast<long long>(array.attr("size"));
  if (size > 0 && std::strchr(kinds, kind[0]) == nullptr) {
    nb::raise_type_error("%s: got %s, wanted %s", name, text(array.attr("dtype")).c_str(), wanted);
  }
  // An array may claim more entries than it holds, by strides of 0.
  check_memory(static_cast<double>(size) * sizeof(double), name, size);
  return array;
}

/// Any 0/1 array as a bool array; one that is bool already stays as it is.
nb::object as_bools(const ArrayLike& value, const char* name) {
  nb::object array = as_array(value, "biu", "bool or the integers 0 and 1", name);
  nb::object bools = array.attr("astype")("bool", nb::arg("copy") = false);
  if (!bools.is(array) && !nb::cast<bool>(numpy("array_equal")(array, bools))) {
    raise_value_error("%s: holds integers other than 0 and 1", name);
  }
  return bools;
}

template <class T, int dims>
View<T, dims> view_of(const nb::object& array, const char* name) {
  View<T, dims> view;
  if (!nb::try_cast(array, view, false)) {
    raise_value_error("%s: got shape %s, wanted %d dimensions", name,
                      text(array.attr("shape")).c_str(), dims);
  }
  return view;
}

/// Of an empty value any number of dimensions will do: numpy reads [] as one.
bool is_empty(const nb::object& array) {
  return nb::cast<long long>(array.attr("size")) == 0;
}

/// Integers that fit an int, row after row.
nb::object as_ints(const nb::object& array, const char* name) {
  nb::object ints = numpy("ascontiguousarray")(array, "int32");
  if (!nb::cast<bool>(numpy("array_equal")(array, ints))) {
    raise_value_error("%s: holds integers beyond 32 bits", name);
  }
  return ints;
}

/// Finite numbers, row after row.
nb::object as_doubles(const nb::object& array, const char* name) {
  nb::object doubles = numpy("ascontiguousarray")(array, "float64");
  if (!nb::cast<bool>(numpy("isfinite")(doubles).attr("all")().attr("item")())) {
    raise_value_error("%s: holds nan or inf, wanted finite numbers", name);
  }
  return doubles;
}

void check_shape(std::size_t rows, std::size_t cols, int want_rows, int want_cols,
                 const char* name) {
  if (std::cmp_less(rows, want_rows) || std::cmp_less(cols, want_cols)) {
    raise_value_error("%s: got shape (%zu, %zu), wanted at least (%d, %d)", name, rows, cols,
                      want_rows, want_cols);
  }
}

/// Eight bytes of 0 or 1 to eight bits, the first byte lowest.
inline Word gather_bits(const bool* bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return (word * 0x0102040810204080ULL) >> 56;
}

constexpr auto spread_bits = [] {
  std::array<Word, 256> table{};
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    for (int bit = 0; bit < 8; ++bit) table[byte] |= Word{(byte >> bit) & 1} << (8 * bit);
  }
  return table;
}();

void pack_row(const bool* bytes, std::int64_t step, int count, Word* words) {
  int c = 0;
  if (step == 1) {
    for (; c + 8 <= count; c += 8) {
      words[c / word_bits] |= gather_bits(bytes + c) << (c % word_bits);
    }
  }
  for (; c < count; ++c) words[c / word_bits] |= Word{bytes[c * step]} << (c % word_bits);
}

void unpack_row(const Word* words, int count, bool* bytes) {
  int c = 0;
  for (; c + 8 <= count; c += 8) {
    const Word spread = spread_bits[(words[c / word_bits] >> (c % word_bits)) & 255];
    std::memcpy(bytes + c, &spread, sizeof spread);
  }
  for (; c < count; ++c) bytes[c] = (words[c / word_bits] >> (c % word_bits)) & 1;
}

constexpr int most_lines = 1 << 30;

/// The shape that a function asks for, by its own arguments.
void check_wanted(int rows, int cols, const char* name) {
  const auto [least, most] = std::minmax(rows, cols);
  if (least < 0) raise_value_error("%s: its size is given as %d, wanted at least 0", name, least);
  if (most > most_lines) {
    raise_value_error("%s: its size is given as %d, wanted at most 2^30", name, most);
  }
}

/// The shape that a value has.
int to_int(std::size_t size, const char* name) {
  if (size > most_lines)
    raise_value_error("%s: got a size of %zu, wanted at most 2^30", name, size);
  return static_cast<int>(size);
}

BitMatrix pack(const View<bool, 2>& view, int rows, int cols, const char* name) {
  check_shape(view.shape(0), view.shape(1), rows, cols, name);
  check_memory(static_cast<double>(rows) * cols / 8, name, rows);
  BitMatrix bits(rows, cols);
  for (int r = 0; r < bits.rows(); ++r) {
    pack_row(view.data() + r * view.stride(0), view.stride(1), bits.cols(), bits.row(r));
  }
  return bits;
}

/// A numpy array and its buffer, which the caller fills and the array owns.
template <class Array, class T = typename Array::Scalar>
std::pair<Array, T*> new_array(std::initializer_list<std::size_t> shape) {
  std::size_t size = 1;
  for (const std::size_t extent : shape) size *= extent;
  T* data = new T[std::max<std::size_t>(size, 1)];
  nb::capsule owner(data, [](void* p) noexcept { delete[] static_cast<T*>(p); });
  return {Array(data, shape, owner), data};
}

template <class Array, class T>
Array table_to_numpy(const TableOf<T>& table) {
  const std::size_t cols = table.empty() ? 0 : table.front().size();
  auto [array, data] = new_array<Array>({table.size(), cols});
  for (const auto& row : table) data = std::copy(row.begin(), row.end(), data);
  return array;
}

}  // namespace

BitMatrix to_bits(const ArrayLike& value, int rows, int cols, const char* name) {
  check_wanted(rows, cols, name);
  View<bool, 2> view;
  if (nb::try_cast(value.source, view, false)) return pack(view, rows, cols, name);
  const nb::object bools = as_bools(value, name);
  if (is_empty(bools) && (rows == 0 || cols == 0)) return BitMatrix(rows, cols);
  return pack(view_of<bool, 2>(bools, name), rows, cols, name);
}

BitMatrix to_bits(const ArrayLike& value, const char* name) {
  const nb::object bools = as_bools(value, name);
  if (is_empty(bools)) return BitMatrix();
  const auto view = view_of<bool, 2>(bools, name);
  return pack(view, to_int(view.shape(0), name), to_int(view.shape(1), name), name);
}

BoolMatrix to_bool_matrix(const ArrayLike& value, int rows, int cols, const char* name) {
  return to_bits(value, rows, cols, name).unpack();
}

BoolRow to_bool_row(const ArrayLike& value, int size, const char* name) {
  check_wanted(size, 0, name);
  const nb::object bools = as_bools(value, name);
  if (size == 0 && is_empty(bools)) return {};
  const auto view = view_of<bool, 1>(bools, name);
  if (std::cmp_less(view.shape(0), size)) {
    raise_value_error("%s: got %zu entries, wanted at least %d", name, view.shape(0), size);
  }
  BoolRow row(static_cast<std::size_t>(size));
  for (std::size_t c = 0; c < row.size(); ++c) {
    row[c] = view.data()[static_cast<std::int64_t>(c) * view.stride(0)];
  }
  return row;
}

template <class T>
TableOf<T> to_table(const ArrayLike& value, int size, const char* name, T most) {
  constexpr bool whole = std::is_integral_v<T>;
  const nb::object array = as_array(value, whole ? "biu" : "biuf", "numbers", name);
  check_wanted(size, size, name);
  const auto n = static_cast<std::size_t>(size);
  if (n == 0 && is_empty(array)) return {};
  const auto view = view_of<T, 2>(whole ? as_ints(array, name) : as_doubles(array, name), name);
  check_shape(view.shape(0), view.shape(1), size, size, name);
  TableOf<T> table(n, std::vector<T>(n));
  for (std::size_t r = 0; r < n; ++r) {
    std::copy_n(view.data() + static_cast<std::int64_t>(r) * view.stride(0), n, table[r].begin());
    for (const T entry : table[r]) {
      if (entry <= most && entry >= -most - 1) continue;
      raise_value_error("%s: holds %.17g, wanted %.17g to %.17g", name, static_cast<double>(entry),
                        static_cast<double>(-most - 1), static_cast<double>(most));
    }
  }
  return table;
}
template TableOf<int> to_table<int>(const ArrayLike&, int, const char*, int);
template TableOf<double> to_table<double>(const ArrayLike&, int, const char*, double);

std::vector<unsigned char> to_exponents(const ArrayLike& value, int size, const char* name) {
  const auto table = to_table<int>(value, size, name, 3);
  std::vector<unsigned char> bytes;
  bytes.reserve(table.size() * table.size());
  for (const auto& row : table) {
    for (const int entry : row) {
      if (entry < 0 || entry > 3) raise_value_error("%s: holds %d, wanted 0 to 3", name, entry);
      bytes.push_back(static_cast<unsigned char>(entry));
    }
  }
  return bytes;
}

internal::BitGraph to_graph(const ArrayLike& adjacency) {
  const BitMatrix bits = to_bits(adjacency, "adjacency");
  internal::BitGraph graph(bits.rows());
  for (int v = 0; v < bits.rows(); ++v) {
    for (int w = 0; w < v; ++w) {
      if (bits.get(v, w)) graph.join(v, w);
    }
  }
  return graph;
}

GateList to_gates(const ArrayLike& value, int n, const char* name) {
  const nb::object array = as_array(value, "iu", "integers", name);
  if (is_empty(array)) return {};
  const auto view = view_of<int, 2>(as_ints(array, name), name);
  if (view.shape(1) != 2) {
    raise_value_error("%s: got shape (%zu, %zu), wanted (gates, 2)", name, view.shape(0),
                      view.shape(1));
  }
  GateList gates;
  gates.reserve(view.shape(0));
  const int* pair = view.data();
  for (std::size_t g = 0; g < view.shape(0); ++g, pair += 2) gates.emplace_back(pair[0], pair[1]);
  check_gates(gates, n);
  return gates;
}

BoolArray1 to_numpy(const BoolRow& row) {
  auto [array, data] = new_array<BoolArray1>({row.size()});
  std::copy(row.begin(), row.end(), data);
  return array;
}

BoolArray2 to_numpy(const BitMatrix& m) {
  const auto cols = static_cast<std::size_t>(m.cols());
  auto [array, data] = new_array<BoolArray2>({static_cast<std::size_t>(m.rows()), cols});
  for (int r = 0; r < m.rows(); ++r, data += cols) unpack_row(m.row(r), m.cols(), data);
  return array;
}

BoolArray2 to_numpy(const BoolMatrix& m) {
  const std::size_t cols = m.empty() ? 0 : m.front().size();
  return to_numpy(BitMatrix::pack(m, static_cast<int>(m.size()), static_cast<int>(cols)));
}

IntArray2 to_numpy(const GateList& gates) {
  auto [array, data] = new_array<IntArray2>({gates.size(), 2});
  for (const auto& [control, target] : gates) {
    *data++ = control;
    *data++ = target;
  }
  return array;
}

IntArray2 to_numpy(const TableOf<int>& table) {
  return table_to_numpy<IntArray2>(table);
}

DoubleArray2 to_numpy(const TableOf<double>& table) {
  return table_to_numpy<DoubleArray2>(table);
}

ByteArray1 to_numpy(const std::vector<unsigned char>& bytes) {
  auto [array, data] = new_array<ByteArray1>({bytes.size()});
  std::copy(bytes.begin(), bytes.end(), data);
  return array;
}

ByteArray2 to_numpy(const std::vector<std::pair<unsigned char, unsigned char>>& pairs) {
  auto [array, data] = new_array<ByteArray2>({pairs.size(), 2});
  for (const auto& [first, second] : pairs) {
    *data++ = first;
    *data++ = second;
  }
  return array;
}

ByteArray2 to_numpy_square(const std::vector<unsigned char>& bytes) {
  std::size_t size = 0;
  while (size * size < bytes.size()) ++size;
  auto [array, data] = new_array<ByteArray2>({size, size});
  std::copy(bytes.begin(), bytes.end(), data);
  return array;
}

}  // namespace zelt::braidwerk::python
