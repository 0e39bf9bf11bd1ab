#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <stdexcept>
#include <string_view>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/row_sums.h"
#include "zeltbraidwerk/foundations/internal/turns.h"

namespace zelt::braidwerk::internal {
namespace {

/// Each gate flips the sign of some letters and moves the bits; the sign is read off the old bits.
ZELTBRAIDWERK_CLONES
void conjugate(OneQubitGate gate, Word* __restrict x, Word* __restrict z, Word* __restrict sign,
               int words) {
  switch (gate) {
    case OneQubitGate::h:
      for (int w = 0; w < words; ++w) {
        const Word old = x[w];
        sign[w] ^= old & z[w];
        x[w] = z[w];
        z[w] = old;
      }
      break;
    case OneQubitGate::s:
      for (int w = 0; w < words; ++w) {
        sign[w] ^= x[w] & z[w];
        z[w] ^= x[w];
      }
      break;
    case OneQubitGate::s_dagger:
      for (int w = 0; w < words; ++w) {
        sign[w] ^= x[w] & ~z[w];
        z[w] ^= x[w];
      }
      break;
    case OneQubitGate::rx_plus:
      for (int w = 0; w < words; ++w) {
        sign[w] ^= z[w] & ~x[w];
        x[w] ^= z[w];
      }
      break;
    case OneQubitGate::rx_minus:
      for (int w = 0; w < words; ++w) {
        sign[w] ^= x[w] & z[w];
        x[w] ^= z[w];
      }
      break;
    case OneQubitGate::ry_plus:
      for (int w = 0; w < words; ++w) {
        const Word old = x[w];
        sign[w] ^= old & ~z[w];
        x[w] = z[w];
        z[w] = old;
      }
      break;
    case OneQubitGate::ry_minus:
      for (int w = 0; w < words; ++w) {
        const Word old = x[w];
        sign[w] ^= z[w] & ~old;
        x[w] = z[w];
        z[w] = old;
      }
      break;
    case OneQubitGate::x:
      for (int w = 0; w < words; ++w) sign[w] ^= z[w];
      break;
    case OneQubitGate::y:
      for (int w = 0; w < words; ++w) sign[w] ^= x[w] ^ z[w];
      break;
    case OneQubitGate::z:
      for (int w = 0; w < words; ++w) sign[w] ^= x[w];
      break;
  }
}

ZELTBRAIDWERK_CLONES
void conjugate(TwoQubitGate gate, Word* __restrict xa, Word* __restrict za, Word* __restrict xb,
               Word* __restrict zb, Word* __restrict sign, int words) {
  // exp(-i pi/4 X X) multiplies by -i X X the rows that anticommute with X X, which are those with
  // a Z bit on one of the two qubits. The letter there is Z or Y; the two pick up opposite signs.
  const Word inverse = gate == TwoQubitGate::xx_inverse ? ~Word{0} : 0;
  switch (gate) {
    case TwoQubitGate::cnot:
      for (int w = 0; w < words; ++w) {
        sign[w] ^= xa[w] & zb[w] & ~(xb[w] ^ za[w]);
        xb[w] ^= xa[w];
        za[w] ^= zb[w];
      }
      break;
    case TwoQubitGate::cz:
      for (int w = 0; w < words; ++w) {
        sign[w] ^= xa[w] & xb[w] & (za[w] ^ zb[w]);
        za[w] ^= xb[w];
        zb[w] ^= xa[w];
      }
      break;
    case TwoQubitGate::swap:
      for (int w = 0; w < words; ++w) {
        const Word x = xa[w];
        const Word z = za[w];
        xa[w] = xb[w];
        za[w] = zb[w];
        xb[w] = x;
        zb[w] = z;
      }
      break;
    case TwoQubitGate::xx:
    case TwoQubitGate::xx_inverse:
      for (int w = 0; w < words; ++w) {
        const Word turned = za[w] ^ zb[w];
        const Word is_y = (za[w] & xa[w]) ^ (zb[w] & xb[w]);
        sign[w] ^= turned & ~(is_y ^ inverse);
        xa[w] ^= turned;
        xb[w] ^= turned;
      }
      break;
  }
}

ZELTBRAIDWERK_CLONES
void count_letters(const Word* x, const Word* z, const Word* mask, int words, int* counts) {
  for (int w = 0; w < words; ++w) {
    const Word among = mask != nullptr ? mask[w] : ~Word{0};
    counts[1] += std::popcount(x[w] & ~z[w] & among);
    counts[2] += std::popcount(x[w] & z[w] & among);
    counts[3] += std::popcount(z[w] & ~x[w] & among);
    if (mask != nullptr) counts[0] += std::popcount(among);
  }
}

/// Adds 1 to the bit-sliced number of each row set in x or z; its digits stand `words` apart.
void count_support(const Word* x, const Word* z, Word* digits, int words) {
  for (int w = 0; w < words; ++w) {
    add_ones(digits + w, static_cast<std::size_t>(words), x[w] | z[w]);
  }
}

bool any(const Word* plane, int words) {
  return std::any_of(plane, plane + words, [](Word word) { return word != 0; });
}

struct Single {
  std::string_view name;
  OneQubitGate gate;
};
constexpr Single singles[] = {{"H", OneQubitGate::h}, {"S", OneQubitGate::s},
                              {"X", OneQubitGate::x}, {"Y", OneQubitGate::y},
                              {"Z", OneQubitGate::z}, {"D-S", OneQubitGate::s_dagger}};

struct Rotation {
  std::string_view name;
  OneQubitGate minus, plus, half;
};
constexpr Rotation rotations[] = {
    {"RX", OneQubitGate::rx_minus, OneQubitGate::rx_plus, OneQubitGate::x},
    {"RY", OneQubitGate::ry_minus, OneQubitGate::ry_plus, OneQubitGate::y},
    {"RZ", OneQubitGate::s_dagger, OneQubitGate::s, OneQubitGate::z},
    {"PH", OneQubitGate::s_dagger, OneQubitGate::s, OneQubitGate::z}};

void rotate(PauliFrame& frame, const Rotation& rotation, const structures::Gate& gate) {
  const int q = gate.qbits[0];
  switch (turn_of(gate.params[0])) {
    case Turn::none:
      return;
    case Turn::quarter_back:
      return frame.apply(rotation.minus, q);
    case Turn::quarter:
      return frame.apply(rotation.plus, q);
    case Turn::half:
      return frame.apply(rotation.half, q);
  }
}

}  // namespace

PauliFrame::PauliFrame(int qubits, int rows)
    : x_(qubits, rows), z_(qubits, rows), signs_(1, rows) {}

PauliFrame PauliFrame::pack(const std::vector<PauliLetters>& strings, int qubits) {
  PauliFrame frame(qubits, static_cast<int>(strings.size()));
  for (int r = 0; r < frame.rows(); ++r) {
    const PauliLetters& letters = strings[static_cast<std::size_t>(r)];
    const int length = std::min(frame.qubits(), static_cast<int>(letters.size()));
    for (int q = 0; q < length; ++q) {
      const unsigned char letter = letters[static_cast<std::size_t>(q)];
      if (letter > 3) throw std::out_of_range("map::at:  key not found");
      frame.set_letter(r, q, letter);
    }
  }
  return frame;
}

PauliLetters PauliFrame::letters(int r) const {
  PauliLetters letters(static_cast<std::size_t>(qubits()));
  for (int q = 0; q < qubits(); ++q) letters[static_cast<std::size_t>(q)] = letter(r, q);
  return letters;
}

void PauliFrame::unpack_into(std::vector<PauliLetters>& strings) const {
  for (int r = 0; r < rows(); ++r) {
    PauliLetters& letters = strings[static_cast<std::size_t>(r)];
    const int length = std::min(qubits(), static_cast<int>(letters.size()));
    for (int q = 0; q < length; ++q) letters[static_cast<std::size_t>(q)] = letter(r, q);
  }
}

PauliFrame PauliFrame::select(std::span<const int> rows) const {
  PauliFrame result(qubits(), static_cast<int>(rows.size()));
  const auto copy = [&](const Word* from, Word* to) {
    for (std::size_t k = 0; k < rows.size(); ++k) {
      const auto r = static_cast<std::size_t>(rows[k]);
      to[k / word_bits] |= ((from[r / word_bits] >> (r % word_bits)) & 1) << (k % word_bits);
    }
  };
  for (int q = 0; q < qubits(); ++q) {
    copy(x(q), result.x(q));
    copy(z(q), result.z(q));
  }
  copy(signs(), result.signs());
  return result;
}

void PauliFrame::apply(OneQubitGate gate, int q) {
  conjugate(gate, x(q), z(q), signs(), words());
}

void PauliFrame::apply(TwoQubitGate gate, int a, int b) {
  conjugate(gate, x(a), z(a), x(b), z(b), signs(), words());
}

void PauliFrame::apply(const CliffordGate& gate, int first_word, int end_word) {
  using Kind = CliffordGate::Kind;
  const int count = end_word - first_word;
  const auto at = [&](Word* plane) { return plane + first_word; };
  const auto one = [&](OneQubitGate kind) {
    conjugate(kind, at(x(gate.a)), at(z(gate.a)), at(signs()), count);
  };
  const auto two = [&](TwoQubitGate kind) {
    conjugate(kind, at(x(gate.a)), at(z(gate.a)), at(x(gate.b)), at(z(gate.b)), at(signs()), count);
  };
  switch (gate.kind) {
    case Kind::cnot:
      return two(TwoQubitGate::cnot);
    case Kind::cz:
      return two(TwoQubitGate::cz);
    case Kind::h:
      return one(OneQubitGate::h);
    case Kind::s:
      return one(OneQubitGate::s);
    case Kind::s_dagger:
      return one(OneQubitGate::s_dagger);
    case Kind::rx_plus:
      return one(OneQubitGate::rx_plus);
    case Kind::rx_minus:
      return one(OneQubitGate::rx_minus);
    case Kind::x:
      return one(OneQubitGate::x);
    case Kind::y:
      return one(OneQubitGate::y);
    case Kind::z:
      return one(OneQubitGate::z);
  }
}

void PauliFrame::apply(const structures::Gate& gate) {
  const std::vector<int>& q = gate.qbits;
  if (gate.name == "CNOT") return cnot(q[0], q[1]);
  if (gate.name == "CSIGN" || gate.name == "CZ") return cz(q[0], q[1]);
  for (const Single& single : singles) {
    if (gate.name == single.name) return apply(single.gate, q[0]);
  }
  for (const Rotation& rotation : rotations) {
    if (gate.name == rotation.name) return rotate(*this, rotation, gate);
  }
  if (gate.name == "XX") {
    for (auto a = q.begin(); a != q.end(); ++a) {
      for (auto b = a + 1; b != q.end(); ++b) apply(TwoQubitGate::xx, *a, *b);
    }
    return;
  }
  throw std::logic_error("Attempt to apply non-Clifford gate");
}

int PauliFrame::weight(int r) const {
  int weight = 0;
  for (int q = 0; q < qubits(); ++q) weight += x_.get(q, r) || z_.get(q, r);
  return weight;
}

BitMatrix PauliFrame::weight_planes(std::span<const int> qubits) const {
  BitMatrix numbers(static_cast<int>(std::bit_width(qubits.size())), rows());
  for (const int q : qubits) count_support(x(q), z(q), numbers.row(0), words());
  return numbers;
}

std::vector<int> PauliFrame::weights() const {
  std::vector<int> all(static_cast<std::size_t>(qubits()));
  std::iota(all.begin(), all.end(), 0);
  const BitMatrix numbers = weight_planes(all);
  std::vector<int> weights(static_cast<std::size_t>(rows()));
  for (int r = 0; r < rows(); ++r) {
    for (int k = 0; k < numbers.rows(); ++k) {
      weights[static_cast<std::size_t>(r)] |= int{numbers.get(k, r)} << k;
    }
  }
  return weights;
}

int PauliFrame::lightest_row(std::span<const int> qubits) const {
  const BitMatrix numbers = weight_planes(qubits);
  std::vector<Word> best(static_cast<std::size_t>(words()));
  for (int k = 0; k < numbers.rows(); ++k) {
    for (int w = 0; w < words(); ++w) best[static_cast<std::size_t>(w)] |= numbers.row(k)[w];
  }
  if (!any(best.data(), words())) return -1;
  // From the highest digit down, rows with a 0 there beat those with a 1.
  std::vector<Word> zero(best.size());
  for (int k = numbers.rows(); k-- > 0;) {
    for (std::size_t w = 0; w < best.size(); ++w) zero[w] = best[w] & ~numbers.row(k)[w];
    if (any(zero.data(), words())) best.swap(zero);
  }
  const auto first = std::find_if(best.begin(), best.end(), [](Word word) { return word != 0; });
  return static_cast<int>(first - best.begin()) * word_bits + std::countr_zero(*first);
}

std::array<int, 4> PauliFrame::letter_counts(int q, const Word* mask) const {
  std::array<int, 4> counts{};
  if (mask == nullptr) counts[0] = rows();
  count_letters(x(q), z(q), mask, words(), counts.data());
  counts[0] -= counts[1] + counts[2] + counts[3];
  return counts;
}

BitMatrix PauliFrame::supports() const {
  BitMatrix planes = x_;
  for (int q = 0; q < qubits(); ++q) {
    for (int w = 0; w < words(); ++w) planes.row(q)[w] |= z(q)[w];
  }
  return planes.transposed();
}

bool PauliFrame::commute(int r, int s) const {
  bool commute = true;
  for (int q = 0; q < qubits(); ++q) {
    commute ^= (x_.get(q, r) && z_.get(q, s)) != (z_.get(q, r) && x_.get(q, s));
  }
  return commute;
}

BitMatrix PauliFrame::anticommuting() const {
  // How often one row has X or Y where the other has Z or Y, modulo 2; then the other way round.
  BitMatrix odd = product(x_.transposed(), z_);
  const BitMatrix back = odd.transposed();
  for (int r = 0; r < rows(); ++r) add_words(odd.row(r), back.row(r), words());
  return odd;
}

void PauliFrame::anticommuting_rows(const PauliFrame& strings, int r, Word* out) const {
  std::fill_n(out, words(), Word{0});
  for (int q = 0; q < qubits(); ++q) {
    if (strings.x_.get(q, r)) add_words(out, z(q), words());
    if (strings.z_.get(q, r)) add_words(out, x(q), words());
  }
}

}  // namespace zelt::braidwerk::internal
