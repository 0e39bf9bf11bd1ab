#include "zeltbraidwerk/clifford/search/internal/code.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/echelon.h"

namespace zelt::braidwerk::internal {
namespace {

/// Brings a matrix to reduced row echelon form, and returns its rank.
int reduce_rows_of(BitMatrix& m) {
  int rank = 0;
  for (int c = 0; c < m.cols() && rank < m.rows(); ++c) {
    int pivot = rank;
    while (pivot < m.rows() && !m.get(pivot, c)) ++pivot;
    if (pivot == m.rows()) continue;
    m.swap_rows(rank, pivot);
    m.clear_column(rank++, c);
  }
  return rank;
}

/// Whether row r of one matrix anticommutes with row s of another.
BitMatrix anticommuting(const BitMatrix& a, const BitMatrix& b) {
  const int n = b.cols() / 2;
  BitMatrix exchanged(b.rows(), b.cols());  // X bits and Z bits
  for (int r = 0; r < b.rows(); ++r) {
    for (int q = 0; q < n; ++q) {
      exchanged.set(r, q, b.get(r, n + q));
      exchanged.set(r, n + q, b.get(r, q));
    }
  }
  return product(a, exchanged.transposed());
}

void add(BitMatrix& to, const BitMatrix& m) {
  for (int r = 0; r < to.rows(); ++r) {
    for (int w = 0; w < to.stride(); ++w) to.row(r)[w] ^= m.row(r)[w];
  }
}

/// Signed strings without their signs, row by row.
class Rows {
 public:
  explicit Rows(const PauliFrame& strings)
      : x_(strings.x_planes().transposed()), z_(strings.z_planes().transposed()) {}

  /// How much heavier a row becomes when it is multiplied by another.
  int gain(int from, int to) const {
    int gain = 0;
    for (int w = 0; w < x_.stride(); ++w) {
      const Word x = x_.row(to)[w];
      const Word z = z_.row(to)[w];
      gain += std::popcount((x ^ x_.row(from)[w]) | (z ^ z_.row(from)[w])) - std::popcount(x | z);
    }
    return gain;
  }
  void multiply(int from, int to) {
    x_.add_row(from, to);
    z_.add_row(from, to);
  }
  PauliFrame frame() const {
    PauliFrame result(x_.cols(), x_.rows());
    for (int r = 0; r < x_.rows(); ++r) {
      for (int q = 0; q < x_.cols(); ++q) {
        result.set_letter(r, q, letter_of(x_.get(r, q), z_.get(r, q)));
      }
    }
    return result;
  }

 private:
  BitMatrix x_;
  BitMatrix z_;
};

}  // namespace

PauliFrame with_light_gauge(const PauliFrame& images, int logical_qubits) {
  const int n = images.qubits();
  Rows rows(images);
  // Z on a zero controls X or Z on another input: two rows are multiplied by one each.
  const auto try_control = [&](int zero, int letter, int partner) {
    if (rows.gain(letter, zero) + rows.gain(n + zero, partner) >= 0) return false;
    rows.multiply(letter, zero);
    rows.multiply(n + zero, partner);
    return true;
  };
  for (bool lighter = true; lighter;) {
    lighter = false;
    for (int zero = logical_qubits; zero < n; ++zero) {
      for (int other = 0; other < n; ++other) {
        if (other == zero) continue;
        lighter |= try_control(zero, other, n + other);
        lighter |= try_control(zero, n + other, other);
      }
    }
  }
  return rows.frame();
}

BitMatrix bits_of(const PauliFrame& strings) {
  const int n = strings.qubits();
  const BitMatrix x = strings.x_planes().transposed();
  const BitMatrix z = strings.z_planes().transposed();
  BitMatrix both(strings.rows(), 2 * n);
  for (int r = 0; r < strings.rows(); ++r) {
    std::copy_n(x.row(r), x.stride(), both.row(r));
    each_word(n, [&](std::size_t k, int width) {
      write_bits(both.row(r), static_cast<std::size_t>(n) + k, width, z.row(r)[k / word_bits]);
    });
  }
  return both;
}

void apply_unsigned(PauliFrame& strings, const Gate& gate) {
  for (int w = 0; w < strings.words(); ++w) {
    Word odd = 0;
    for (const End end : {gate.a, gate.b}) {
      const int q = wire_of(end);
      odd ^= (strings.x(q)[w] & (Word{0} - Word(end >> 1 & 1))) ^
             (strings.z(q)[w] & (Word{0} - Word(end & 1)));
    }
    for (const End end : {gate.a, gate.b}) {
      const int q = wire_of(end);
      if ((label_of(end) & label_x) != 0) strings.x(q)[w] ^= odd;
      if ((label_of(end) & label_z) != 0) strings.z(q)[w] ^= odd;
    }
  }
}

void multiply(PauliFrame& strings, int from, int to) {
  for (int q = 0; q < strings.qubits(); ++q) {
    strings.set_letter(to, q,
                       letter_of(strings.x_planes().get(q, from) != strings.x_planes().get(q, to),
                                 strings.z_planes().get(q, from) != strings.z_planes().get(q, to)));
  }
}

PauliFrame on_wires(const PauliFrame& strings, const std::vector<int>& wires) {
  PauliFrame result(strings.qubits(), strings.rows());
  for (int r = 0; r < strings.rows(); ++r) {
    for (int q = 0; q < strings.qubits(); ++q) {
      result.set_letter(r, wires[static_cast<std::size_t>(q)], strings.letter(r, q));
    }
    result.set_negative(r, strings.is_negative(r));
  }
  return result;
}

bool are_independent_stabilisers(const PauliFrame& strings) {
  return strings.rows() <= strings.qubits() && strings.anticommuting().weight() == 0 &&
         rank(bits_of(strings)) == strings.rows();
}

bool are_light(const PauliFrame& strings) {
  constexpr int few_letters = 12;
  const std::vector<int> weights = strings.weights();
  const auto light = std::ranges::count_if(weights, [](int w) { return w <= few_letters; });
  return 4 * light >= std::ssize(weights);
}

bool are_logicals_of(const PauliFrame& strings, const PauliFrame& stabilisers) {
  const int k = stabilisers.qubits() - stabilisers.rows();
  if (strings.qubits() != stabilisers.qubits() || strings.rows() != 2 * k) return false;
  std::vector<Word> odd(static_cast<std::size_t>(stabilisers.words()));
  for (int r = 0; r < 2 * k; ++r) {
    stabilisers.anticommuting_rows(strings, r, odd.data());
    if (std::ranges::any_of(odd, [](Word word) { return word != 0; })) return false;
    for (int s = r + 1; s < 2 * k; ++s) {
      if (strings.commute(r, s) == (s == r + k)) return false;
    }
  }
  return true;
}

/// Destabilisers of the operator are made to fit the stabilisers, then the logical operators, then
/// each other. Each step leaves what the ones before it made.
PauliFrame images_as_given(const Code& code, const PauliFrame& images) {
  const int n = code.qubits();
  const int k = code.logical_qubits();
  std::vector<int> rows(static_cast<std::size_t>(n - k));
  std::iota(rows.begin(), rows.end(), k);
  const BitMatrix stabilisers = bits_of(code.stabilisers);
  const BitMatrix logicals = bits_of(code.logicals);
  std::vector<int> partners(static_cast<std::size_t>(2 * k));  // Z for X, and X for Z
  for (int r = 0; r < 2 * k; ++r) partners[static_cast<std::size_t>(r)] = (r + k) % (2 * k);
  BitMatrix free = bits_of(images.select(rows));
  free = product(inverse(anticommuting(free, stabilisers)), free);
  const BitMatrix odd = anticommuting(free, bits_of(code.logicals.select(partners)));
  add(free, product(odd, logicals));
  BitMatrix among = anticommuting(free, free);
  for (int r = 0; r < n - k; ++r) {
    for (int s = r; s < n - k; ++s) among.set(r, s, false);
  }
  add(free, product(among, stabilisers));
  PauliFrame result(n, 2 * n);
  const auto put = [&](const BitMatrix& from, int first, int count, int to) {
    for (int r = 0; r < count; ++r) {
      for (int q = 0; q < n; ++q) {
        result.set_letter(to + r, q, letter_of(from.get(first + r, q), from.get(first + r, n + q)));
      }
    }
  };
  put(logicals, 0, k, 0);
  put(free, 0, n - k, k);
  put(logicals, k, k, n);
  put(stabilisers, 0, n - k, n + k);
  return result;
}

/// The reduced rows are unique, so each one is of one group.
WireGroups entangled_groups(const PauliFrame& stabilisers) {
  const int n = stabilisers.qubits();
  BitMatrix both = bits_of(stabilisers);
  const int rank = reduce_rows_of(both);
  WireGroups groups(n);
  for (int r = 0; r < rank; ++r) {
    int first = -1;
    for (int q = 0; q < n; ++q) {
      if (!both.get(r, q) && !both.get(r, n + q)) continue;
      if (first >= 0) groups.join(first, q);
      first = q;
    }
  }
  return groups;
}

}  // namespace zelt::braidwerk::internal
