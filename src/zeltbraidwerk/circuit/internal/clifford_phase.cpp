#include "zeltbraidwerk/circuit/internal/clifford_phase.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/circuit/internal/folding.h"

namespace zelt::braidwerk::internal {
namespace {

using Bits = std::vector<Word>;

bool bit(const Word* row, int q) {
  return (row[q / word_bits] >> (q % word_bits) & 1U) != 0;
}
void flip(Word* row, int q) {
  row[q / word_bits] ^= Word{1} << (q % word_bits);
}
bool meet_oddly(const Word* row, const Bits& mask) {
  Word sum = 0;
  for (std::size_t w = 0; w < mask.size(); ++w) sum ^= row[w] & mask[w];
  return (std::popcount(sum) & 1) != 0;
}
void add(Word* row, const Word* other, std::size_t words) {
  for (std::size_t w = 0; w < words; ++w) row[w] ^= other[w];
}

/// A stabilizer state exp(i pi/4 eighths) U H(v) |s>, where H(v) has an H on each qubit of v and U
/// is made of CNOT, CZ and S gates. U is kept by what it makes of Pauli operators:
/// U^-1 Z_p U = product of Z_j for j in z(p), U^-1 X_p U = i^powers[p] times the product of
/// X_j for j in xx(p) and Z_j for j in xz(p).
class PhasedState {
 public:
  explicit PhasedState(int n)
      : n_(n),
        words_(static_cast<std::size_t>((n + word_bits - 1) / word_bits)),
        z_(static_cast<std::size_t>(n) * words_),
        xx_(z_.size()),
        xz_(z_.size()),
        powers_(static_cast<std::size_t>(n)),
        v_(words_),
        s_(words_) {
    for (int q = 0; q < n; ++q) {
      flip(row(z_, q), q);
      flip(row(xx_, q), q);
    }
  }

  void cnot(int control, int target) {
    int power = powers_[index(control)] + powers_[index(target)];
    const Word* x = row(xx_, target);
    power += meet_oddly(row(xz_, control), Bits(x, x + words_)) ? 2 : 0;
    powers_[index(control)] = static_cast<std::uint8_t>(power % 4);
    add(row(z_, target), row(z_, control), words_);
    add(row(xx_, control), row(xx_, target), words_);
    add(row(xz_, control), row(xz_, target), words_);
  }
  void cz(int a, int b) {
    add(row(xz_, a), row(z_, b), words_);
    add(row(xz_, b), row(z_, a), words_);
  }
  /// diag(1, i) so many times.
  void s(int q, int times) {
    if (times % 2 != 0) add(row(xz_, q), row(z_, q), words_);
    powers_[index(q)] = static_cast<std::uint8_t>((powers_[index(q)] + 4 - times % 4) % 4);
  }
  /// H is (Z + X) / sqrt(2): a sum of two states that differ by what Z and X make of |s>.
  void h(int q) {
    Bits t = s_;
    Bits u = s_;
    Word signs = 0;
    Word signs_of_x = 0;
    for (std::size_t w = 0; w < words_; ++w) {
      const Word z = row(z_, q)[w];
      const Word x = row(xx_, q)[w];
      const Word xz = row(xz_, q)[w];
      t[w] ^= z & v_[w];
      u[w] ^= (x & ~v_[w]) ^ (xz & v_[w]);
      signs ^= z & ~v_[w] & s_[w];
      signs_of_x ^= (xz & ~v_[w] & s_[w]) ^ (x & v_[w] & (xz ^ s_[w]));
    }
    const int minus = std::popcount(signs) & 1;
    const int power = (powers_[index(q)] + 2 * (minus + (std::popcount(signs_of_x) & 1))) % 4;
    eighths += 4 * minus;
    become_sum(t, u, power);
  }
  /// exp(-i quarters pi/4 P) for a letter P.
  void turn(int letter, int q, int quarters) {
    if (letter == 2) s(q, 3);
    if (letter != 3) h(q);
    s(q, quarters);
    if (letter != 3) h(q);
    if (letter == 2) s(q, 1);
    eighths -= quarters;
  }

  bool is_zeros() const {
    const auto none = [](const Bits& bits) {
      return std::ranges::all_of(bits, [](Word word) { return word == 0; });
    };
    return none(v_) && none(s_);
  }

  int eighths = 0;

 private:
  static std::size_t index(int q) { return static_cast<std::size_t>(q); }
  Word* row(Bits& rows, int q) { return rows.data() + index(q) * words_; }

  /// U H(v) (|t> + i^power |u>) / sqrt(2), in the form of a state.
  void become_sum(const Bits& t, const Bits& u, int power) {
    if (t == u) {
      s_ = t;
      eighths += power == 1 ? 1 : -1;
      return;
    }
    Bits plain(words_);    // where they differ, off v
    Bits crossed(words_);  // and on v
    for (std::size_t w = 0; w < words_; ++w) {
      plain[w] = (t[w] ^ u[w]) & ~v_[w];
      crossed[w] = (t[w] ^ u[w]) & v_[w];
    }
    const bool has_plain = std::ranges::any_of(plain, [](Word word) { return word != 0; });
    Bits& pivots = has_plain ? plain : crossed;
    const int q = first_of(pivots);
    flip(pivots.data(), q);
    for (int p = 0; p < n_; ++p) {
      has_plain ? gather(p, q, plain, crossed) : gather_crossed(p, q, crossed);
    }
    const bool one_first = bit(t.data(), q);
    s_ = one_first ? u : t;
    if (bit(s_.data(), q)) flip(s_.data(), q);
    settle(q, power, one_first);
  }

  static int first_of(const Bits& bits) {
    std::size_t w = 0;
    while (bits[w] == 0) ++w;
    return static_cast<int>(w) * word_bits + std::countr_zero(bits[w]);
  }

  /// Puts CNOTs from q to `plain` and CZs from q to `crossed` before U.
  void gather(int p, int q, const Bits& plain, const Bits& crossed) {
    Word* x = row(xx_, p);
    Word* xz = row(xz_, p);
    if (meet_oddly(row(z_, p), plain)) flip(row(z_, p), q);
    if (meet_oddly(xz, plain)) flip(xz, q);
    const bool has_x = bit(x, q);
    if (has_x) add(x, plain.data(), words_);
    const bool odd = meet_oddly(x, crossed);
    if (odd) flip(xz, q);
    if (!has_x) return;
    add(xz, crossed.data(), words_);
    if (odd) powers_[index(p)] = static_cast<std::uint8_t>((powers_[index(p)] + 2) % 4);
  }
  /// Puts CNOTs from `crossed` to q before U.
  void gather_crossed(int p, int q, const Bits& crossed) {
    if (bit(row(z_, p), q)) add(row(z_, p), crossed.data(), words_);
    if (meet_oddly(row(xx_, p), crossed)) flip(row(xx_, p), q);
    if (bit(row(xz_, p), q)) add(row(xz_, p), crossed.data(), words_);
  }

  /// What is left is on q alone: H^v (|0> + i^power |1>) / sqrt(2), or with 1 first. It becomes
  /// a power of S after an H, or after none, on a basis state.
  void settle(int q, int power, bool one_first) {
    if (one_first) {
      eighths += 2 * power;
      power = (4 - power) % 4;
    }
    const bool was_crossed = bit(v_.data(), q);
    const bool odd = power % 2 != 0;
    bool one = power >= 2;
    if (was_crossed && odd) {
      eighths += power == 1 ? 1 : -1;
      one = !one;
    }
    if (one) flip(s_.data(), q);
    if (odd) {
      for (int p = 0; p < n_; ++p) {
        if (!bit(row(xx_, p), q)) continue;
        flip(row(xz_, p), q);
        powers_[index(p)] = static_cast<std::uint8_t>((powers_[index(p)] + 3) % 4);
      }
    }
    if (was_crossed != (!was_crossed || odd)) flip(v_.data(), q);
  }

  int n_;
  std::size_t words_;
  Bits z_;
  Bits xx_;
  Bits xz_;
  std::vector<std::uint8_t> powers_;
  Bits v_;
  Bits s_;
};

void play(PhasedState& state, const Step& step, int a, int b) {
  switch (step.kind) {
    case StepKind::cnot:
      state.cnot(a, b);
      break;
    case StepKind::cz:
      state.cz(a, b);
      break;
    case StepKind::h:
      state.h(a);
      break;
    case StepKind::turn:
      state.turn(step.letter, a, step.quarters);
      break;
    case StepKind::rotation:
      break;
  }
}

/// Takes multiples of pi/2 out of symbolic angles, as circuits are written: a symbol and a number
/// become two gates. True where there was one.
bool split(StepCircuit& circuit) {
  bool any = false;
  std::vector<Step> steps;
  for (const Step& step : circuit.steps) {
    steps.push_back(step);
    if (step.is_clifford()) continue;
    LinearAngle& angle = circuit.angles[static_cast<std::size_t>(step.row)];
    LinearAngle number;
    number.constant = angle.constant;
    const int quarters = quarters_of(number);
    if (angle.is_number() || angle.constant == 0 || quarters < 0) continue;
    any = true;
    angle.constant = 0;
    circuit.eighths += sign_of_turns(number);
    if (quarters == 0) continue;
    if (step.negative) circuit.eighths += 4;
    steps.push_back(turn(step.letter, step.a, step.negative ? 4 - quarters : quarters));
  }
  circuit.steps = std::move(steps);
  return any;
}

void settle(StepCircuit& circuit) {
  do {
    fold(circuit);
  } while (split(circuit));
}

}  // namespace

int clifford_phase(const StepCircuit& before, const StepCircuit& after,
                   const std::vector<int>& wires) {
  PhasedState state(before.qubits);
  for (const Step& step : before.steps) play(state, step, step.a, step.b);
  std::vector<int> there(wires.size());
  for (std::size_t q = 0; q < wires.size(); ++q) {
    there[static_cast<std::size_t>(wires[q])] = static_cast<int>(q);
  }
  const auto qubit = [&](int wire) {
    return wire < 0 ? -1 : there[static_cast<std::size_t>(wire)];
  };
  for (const Step& step : inverted(after.steps, 0)) {
    if (step.kind == StepKind::turn) state.eighths += 4;  // its inverse is by 4 - quarters, and -1
    play(state, step, qubit(step.a), qubit(step.b));
  }
  if (!state.is_zeros()) throw std::logic_error("circuits of different Clifford operators");
  return ((state.eighths % 8) + 8) % 8;
}

double rewriting_phase(int qubits, const std::vector<structures::Gate>& before,
                       const std::vector<structures::Gate>& after, const std::vector<int>& wires) {
  StepCircuit one = read_steps(qubits, before);
  StepCircuit other = read_steps(qubits, after);
  settle(one);
  settle(other);
  const int eighths = one.eighths - other.eighths + clifford_phase(one, other, wires);
  return eighths * (std::numbers::pi / 4);
}

}  // namespace zelt::braidwerk::internal
