#include "zeltbraidwerk/foundations/operator_tableau.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <sstream>
#include <stdexcept>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace structures {
namespace {

using zelt::braidwerk::internal::question_point;
using Exponent = unsigned char;
using Exponents = std::vector<Exponent>;

/// Number of positions, and 0 for a tableau that was never assigned.
std::size_t size_of(const OperatorTableau& t) {
  return t.data.empty() ? 0 : 2 * static_cast<std::size_t>(t.nbqbits) + 1;
}

/// Sums wrap modulo 256, which keeps them right modulo 4: entries are cut to two bits at the end.
inline void add_multiple(Exponent* __restrict target, const Exponent* __restrict source, int factor,
                         std::size_t count) {
  switch (factor & 3) {
    case 1:
      for (std::size_t k = 0; k < count; ++k)
        target[k] = static_cast<Exponent>(target[k] + source[k]);
      break;
    case 2:
      for (std::size_t k = 0; k < count; ++k)
        target[k] = static_cast<Exponent>(target[k] + source[k] + source[k]);
      break;
    case 3:
      for (std::size_t k = 0; k < count; ++k)
        target[k] = static_cast<Exponent>(target[k] - source[k]);
      break;
    default:
      break;
  }
}

inline void cut(Exponent* entries, std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) entries[k] &= 3;
}

/// Whether a gate matrix leaves its position p alone, seen from the left (its row p) or from the
/// right (its column p).
bool is_unit(const Exponent* entry, std::size_t step, std::size_t k, std::size_t p) {
  for (std::size_t t = 0; t < k; ++t) {
    if (entry[t * step] != (t == p ? 1 : 0)) return false;
  }
  return true;
}

/// Columns are taken in stretches of this many, so that the old rows fit a small buffer.
constexpr std::size_t stretch = 256;

/// The rows `idx` of m, `size` entries each, become g times themselves. `old` holds k stretches.
ZELTBRAIDWERK_CLONES
void combine_rows(Exponent* m, std::size_t size, const Exponent* g, const int* idx, std::size_t k,
                  Exponent* old) {
  for (std::size_t first = 0; first < size; first += stretch) {
    const std::size_t count = std::min(stretch, size - first);
    const auto row = [&](std::size_t t) {
      return m + static_cast<std::size_t>(idx[t]) * size + first;
    };
    for (std::size_t t = 0; t < k; ++t) std::copy_n(row(t), count, old + t * stretch);
    for (std::size_t p = 0; p < k; ++p) {
      if (is_unit(g + p * k, 1, k, p)) continue;
      Exponent* target = row(p);
      const bool grows = g[p * k + p] == 1;  // the old row is there already
      if (!grows) std::fill_n(target, count, Exponent{0});
      for (std::size_t t = 0; t < k; ++t) {
        if (!(grows && t == p)) add_multiple(target, old + t * stretch, g[p * k + t], count);
      }
      cut(target, count);
    }
  }
}

/// The columns `idx` of m become themselves times g. `old` holds 2k entries.
void combine_columns(Exponent* m, std::size_t size, const Exponent* g, const int* idx,
                     std::size_t k, Exponent* old) {
  for (std::size_t p = 0; p < k; ++p) old[k + p] = !is_unit(g + p, k, k, p);
  for (Exponent* row = m; row != m + size * size; row += size) {
    for (std::size_t t = 0; t < k; ++t) old[t] = row[idx[t]];
    for (std::size_t p = 0; p < k; ++p) {
      if (!old[k + p]) continue;
      unsigned sum = 0;
      for (std::size_t t = 0; t < k; ++t) sum += unsigned{g[t * k + p]} * old[t];
      row[idx[p]] = sum & 3;
    }
  }
}

/// One row of a product. Nothing may be thrown in a clone: so the caller looks for stops.
ZELTBRAIDWERK_CLONES
void multiply_row(const Exponent* row, const Exponent* b, Exponent* out, std::size_t size) {
  for (std::size_t c = 0; c < size; ++c) add_multiple(out, b + c * size, row[c], size);
  cut(out, size);
}
void multiply(const Exponent* a, const Exponent* b, Exponent* out, std::size_t size) {
  for (std::size_t r = 0; r < size; ++r) {
    question_point();
    multiply_row(a + r * size, b, out + r * size, size);
  }
}

/// Clears column k of w but for its pivot in row k, the same steps on r.
ZELTBRAIDWERK_CLONES
void clear_column(Exponent* w, Exponent* r, std::size_t size, std::size_t k) {
  for (std::size_t j = 0; j < size; ++j) {
    const int factor = -(w[j * size + k] * w[k * size + k]);
    if (j == k || factor % 4 == 0) continue;
    add_multiple(w + j * size, w + k * size, factor, size);
    add_multiple(r + j * size, r + k * size, factor, size);
  }
}

/// Gauss-Jordan modulo 4 on w, the same steps on r, which starts as the identity. A column without
/// an odd pivot is left out.
void invert(Exponent* w, Exponent* r, std::size_t size) {
  for (std::size_t k = 0; k < size; ++k) {
    question_point();
    std::size_t pivot = k;
    while (pivot < size && w[pivot * size + k] % 2 == 0) ++pivot;
    if (pivot == size) continue;
    if (pivot != k) {
      std::swap_ranges(w + k * size, w + (k + 1) * size, w + pivot * size);
      std::swap_ranges(r + k * size, r + (k + 1) * size, r + pivot * size);
    }
    clear_column(w, r, size, k);
  }
  for (std::size_t k = 0; k < size; ++k) {
    const unsigned factor = w[k * size + k];
    for (Exponent* e = r + k * size; e != r + (k + 1) * size; ++e) *e = *e * factor & 3;
  }
}

enum class Side { left, right };

void update(Exponents& m, int n, const Exponents& g, const int* idx, std::size_t k, Side side) {
  constexpr std::size_t usual = 4;
  Exponent local[usual * stretch];
  Exponents large(k > usual ? k * stretch : 0);
  Exponent* old = k > usual ? large.data() : local;
  const std::size_t size = 2 * static_cast<std::size_t>(n) + 1;
  if (side == Side::left) {
    combine_rows(m.data(), size, g.data(), idx, k, old);
  } else {
    combine_columns(m.data(), size, g.data(), idx, k, old);
  }
}

void one_qubit(OperatorTableau& t, Side side, const Exponents& g, int q) {
  const std::array idx{q + 1, t.nbqbits + q + 1};
  update(t.data, t.nbqbits, g, idx.data(), idx.size(), side);
}

void two_qubits(OperatorTableau& t, Side side, const Exponents& g, int a, int b) {
  const std::array idx{a + 1, b + 1, t.nbqbits + a + 1, t.nbqbits + b + 1};
  update(t.data, t.nbqbits, g, idx.data(), idx.size(), side);
}

}  // namespace

void mult_left(Exponents& m, int n, const Exponents& g, std::vector<int>& idx) {
  update(m, n, g, idx.data(), idx.size(), Side::left);
}

void mult_right(Exponents& m, int n, const Exponents& g, std::vector<int>& idx) {
  update(m, n, g, idx.data(), idx.size(), Side::right);
}

OperatorTableau::OperatorTableau(int n) : nbqbits(n) {
  const std::size_t size = 2 * static_cast<std::size_t>(std::max(n, 0)) + 1;
  data.resize(size * size);
  for (std::size_t k = 0; k < size; ++k) data[k * (size + 1)] = 1;
}

// A right update is by the inverse gate: rotations take the opposite matrix.
void OperatorTableau::cnot_left(int a, int b) {
  two_qubits(*this, Side::left, CNOT, a, b);
}
void OperatorTableau::cnot_right(int a, int b) {
  two_qubits(*this, Side::right, CNOT, a, b);
}
void OperatorTableau::cz_left(int a, int b) {
  two_qubits(*this, Side::left, CZ, a, b);
}
void OperatorTableau::cz_right(int a, int b) {
  two_qubits(*this, Side::right, CZ, a, b);
}
void OperatorTableau::xx_left(int a, int b) {
  two_qubits(*this, Side::left, XX, a, b);
}
void OperatorTableau::xx_right(int a, int b) {
  two_qubits(*this, Side::right, XX_INV, a, b);
}
void OperatorTableau::h_left(int q) {
  one_qubit(*this, Side::left, H, q);
}
void OperatorTableau::h_right(int q) {
  one_qubit(*this, Side::right, H, q);
}
void OperatorTableau::rx_plus_left(int q) {
  one_qubit(*this, Side::left, RXP, q);
}
void OperatorTableau::rx_plus_right(int q) {
  one_qubit(*this, Side::right, RXM, q);
}
void OperatorTableau::rx_minus_left(int q) {
  one_qubit(*this, Side::left, RXM, q);
}
void OperatorTableau::rx_minus_right(int q) {
  one_qubit(*this, Side::right, RXP, q);
}
void OperatorTableau::ry_plus_left(int q) {
  one_qubit(*this, Side::left, RYP, q);
}
void OperatorTableau::ry_plus_right(int q) {
  one_qubit(*this, Side::right, RYM, q);
}
void OperatorTableau::ry_minus_left(int q) {
  one_qubit(*this, Side::left, RYM, q);
}
void OperatorTableau::ry_minus_right(int q) {
  one_qubit(*this, Side::right, RYP, q);
}
void OperatorTableau::rz_plus_left(int q) {
  one_qubit(*this, Side::left, RZP, q);
}
void OperatorTableau::rz_plus_right(int q) {
  one_qubit(*this, Side::right, RZM, q);
}
void OperatorTableau::rz_minus_left(int q) {
  one_qubit(*this, Side::left, RZM, q);
}
void OperatorTableau::rz_minus_right(int q) {
  one_qubit(*this, Side::right, RZP, q);
}
void OperatorTableau::x_left(int q) {
  one_qubit(*this, Side::left, X, q);
}
void OperatorTableau::x_right(int q) {
  one_qubit(*this, Side::right, X, q);
}
void OperatorTableau::y_left(int q) {
  one_qubit(*this, Side::left, Y, q);
}
void OperatorTableau::y_right(int q) {
  one_qubit(*this, Side::right, Y, q);
}
void OperatorTableau::z_left(int q) {
  one_qubit(*this, Side::left, Z, q);
}
void OperatorTableau::z_right(int q) {
  one_qubit(*this, Side::right, Z, q);
}

void OperatorTableau::swap_left(int a, int b) {
  cnot_left(a, b);
  cnot_left(b, a);
  cnot_left(a, b);
}

void OperatorTableau::swap_right(int a, int b) {
  cnot_right(a, b);
  cnot_right(b, a);
  cnot_right(a, b);
}

void OperatorTableau::multiply_right(const OperatorTableau& other) {
  if (nbqbits != other.nbqbits) {
    throw std::logic_error("Can't multiply Tableaus of different dimensions!");
  }
  Exponents result(data.size());
  multiply(data.data(), other.data.data(), result.data(), size_of(*this));
  data = std::move(result);
}

OperatorTableau OperatorTableau::inverse() const {
  Exponents rest = data;
  OperatorTableau result(nbqbits);
  invert(rest.data(), result.data.data(), size_of(*this));
  return result;
}

std::string OperatorTableau::to_string() const {
  std::ostringstream text;
  text << *this;
  return text.str();
}

std::ostream& operator<<(std::ostream& out, const OperatorTableau& t) {
  const std::size_t size = size_of(t);
  for (std::size_t r = 0; r < size; ++r) {
    const Exponent* row = t.data.data() + r * size;
    out << int{row[0]} << (r == 0 ? ' ' : '|');
    for (std::size_t c = 1; c < size; ++c) out << int{row[c]} << ' ';
    out << std::endl;
    if (r != 0) continue;
    for (std::size_t c = 0; c < size; ++c) out << "--";
    out << std::endl;
  }
  return out;
}

}  // namespace structures
